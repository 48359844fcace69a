target_sources(oruapi PRIVATE
  do/hex.cpp
  do/name.cpp
  do/nvlist.cpp
  do/properties_settings.cpp
  do/strbuf.cpp
  do/uri.cpp
  do/value.cpp
  do/value_number.cpp
  do/value_order.cpp
  do/value_parse.cpp
  do/value_text.cpp
  do/value_types.cpp
  do/value_xml.cpp
  do/vlist.cpp
)
