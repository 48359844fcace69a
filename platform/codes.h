// Result codes of the platform layer.
#pragma once

#include <cstdint>

namespace oru::platform {

inline constexpr int32_t kOk = 0;
inline constexpr int32_t kNotFound = 2;
inline constexpr int32_t kNoMemory = 12;
inline constexpr int32_t kExists = 17;
inline constexpr int32_t kInvalid = 22;

// The tags of the layer's own blocks; their names stand in tag_names.cpp.
inline constexpr uint32_t kTagHashTable = 0x2800001;
inline constexpr uint32_t kTagHashBuckets = 0x2800002;
inline constexpr uint32_t kTagHashEntry = 0x2800003;
inline constexpr uint32_t kTagTree = 0x2800004;
inline constexpr uint32_t kTagTreeObject = 0x2800005;

}  // namespace oru::platform
