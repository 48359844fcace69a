/* Where the system gives no process id there is no name to be had, and none is kept. */
#include <oru/util.h>
#include <sys/types.h>
#include <unistd.h>

#include "check.h"

ORU_API pid_t getpid(void) {
    return 0;
}

int main(void) {
    char text[] = "text";
    char *name = text;
    CHECK(oru_get_process_name(&name) == 0);
    CHECK(name == NULL);
    CHECK(procName == NULL);
    return 0;
}
