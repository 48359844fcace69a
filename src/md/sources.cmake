target_sources(oruapi PRIVATE
  md/act_meta.cpp
  md/constraint.cpp
  md/mr_meta.cpp
  md/mr_meta_list.cpp
  md/mr_meta_props.cpp
  md/prop_meta.cpp
  md/prop_meta_list.cpp
  md/typedef_meta.cpp
)
