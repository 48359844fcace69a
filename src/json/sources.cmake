target_sources(oruapi PRIVATE
  json/from_json.cpp
  json/read.cpp
  json/read_events.cpp
  json/read_meta.cpp
  json/read_object.cpp
  json/read_value.cpp
  json/types.cpp
  json/write_list.cpp
  json/write_meta.cpp
  json/write_object.cpp
  json/write_text.cpp
  json/write_value.cpp
  json/yajl_memory.cpp
)
