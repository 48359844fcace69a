target_sources(oruapi PRIVATE
  do/properties_settings.cpp
  do/strbuf.cpp
  do/uri.cpp)
