target_sources(oruapi PRIVATE
  do/name.cpp
  do/properties_settings.cpp
  do/strbuf.cpp
  do/uri.cpp
  do/value.cpp
  do/value_types.cpp)
