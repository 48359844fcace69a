#include "platform/thread_block.h"

#include <limits.h>
#include <pthread.h>

namespace oru::platform {

__thread ThreadBlock t_block __attribute__((tls_model("initial-exec"), visibility("hidden")));

namespace {

pthread_key_t g_exit_key;
pthread_once_t g_exit_key_once = PTHREAD_ONCE_INIT;
bool g_exit_key_made = false;

// Clean-up functions of others may still take and return memory behind this one; the block is then
// armed anew and emptied in the next round, as long as the C library makes rounds.
void empty_block(void *) {
    t_block.armed = 0;
    t_block.exit_rounds++;
    release_magazines(t_block);
    release_tags(t_block);
    release_places(t_block);
}

void make_exit_key() {
    g_exit_key_made = pthread_key_create(&g_exit_key, empty_block) == 0;
}

}  // namespace

bool arm_thread_block() {
    if (t_block.armed != 0) {
        return true;
    }
    if (t_block.exit_rounds >= PTHREAD_DESTRUCTOR_ITERATIONS) {
        return false;
    }
    pthread_once(&g_exit_key_once, make_exit_key);
    if (!g_exit_key_made || pthread_setspecific(g_exit_key, &t_block) != 0) {
        return false;
    }
    t_block.armed = 1;
    return true;
}

}  // namespace oru::platform
