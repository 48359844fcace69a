target_sources(oruapi PRIVATE
  frame/backend.cpp
  frame/dispatch.cpp
  frame/hash.cpp
  frame/hashtable.cpp
  frame/hashtable_grow.cpp
  frame/iter.cpp
  frame/lib.cpp
  frame/location.cpp
  frame/location_keys.cpp
  frame/pool.cpp
  frame/queue.cpp
  frame/rc.cpp
  frame/tags.cpp
  frame/threads.cpp
)
