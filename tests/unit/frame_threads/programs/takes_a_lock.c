/* Works with a thread layer that is put in front of it, and is aborted at the lock without one. */
#include <oru/thread.h>
#include <signal.h>
#include <unistd.h>

#include "check.h"

/* So that the abort is seen as a result of the program. */
static void aborted(int number) {
    (void)number;
    _exit(3);
}

int main(void) {
    oru_mtx_t mutex = {0};
    signal(SIGABRT, aborted);
    CHECK(oru_mtx_lock(&mutex) == 0);
    CHECK(oru_mtx_trylock(&mutex) == 16);
    CHECK(oru_mtx_unlock(&mutex) == 0);
    return 0;
}
