target_sources(oruapi PRIVATE
  pr/crudx_handler.cpp
  pr/ctx.cpp
  pr/ctx_access.cpp
  pr/ctx_error.cpp
  pr/ctx_iter.cpp
  pr/query.cpp
  pr/sorted_table.cpp
  pr/walk.cpp
  pr/where_item.cpp
)
