target_sources(oruapi PRIVATE
  pr/crudx_handler.cpp
)
