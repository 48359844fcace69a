target_sources(oruapi PRIVATE
  dtl/tree.cpp
  dtl/tree_ask.cpp
  dtl/tree_lists.cpp
  dtl/tree_set.cpp
)
