/* A process whose command begins with a path that is longer than what is read of it. */
#include <oru/util.h>
#include <oruplatform/poolheap.h>
#include <string.h>
#include <unistd.h>

#include "check.h"

int main(int argc, char **argv) {
    char *name = NULL;
    if (argc == 1) {
        char path[400];
        char second[] = "again";
        char *arguments[] = {path, second, NULL};
        memset(path, 'x', sizeof path - 1);
        path[sizeof path - 1] = '\0';
        memcpy(path, "/folder/", 8);
        execv("/proc/self/exe", arguments);
        return 1;
    }
    CHECK(strlen(argv[0]) == 399);
    CHECK(oru_get_process_name(&name) == 0);
    CHECK(strlen(name) == 255 - 8); /* a line of 256 bytes has room for 255 and the zero */
    CHECK(strspn(name, "x") == strlen(name));
    CHECK(strcmp(procName, name) == 0);
    ph_free_named(name);
    return 0;
}
