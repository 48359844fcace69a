// Who the calling thread is.
#pragma once

#include "oru/thread.h"

namespace oru::threads {

// Handles count up from 1 and are never given twice, so one that is out of use is known as such.
oru_thread_t next_handle();

// Handle of the calling thread; a thread that was not made here gets its own at the first call.
oru_thread_t self();

// Gives the calling thread the handle that its maker drew for it.
void become(oru_thread_t handle);

}  // namespace oru::threads
