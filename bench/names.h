// Names of attributes, as tables and their peers are asked for them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace oru::bench {

// `count` different names, up to 260.
inline std::vector<std::string> attribute_names(size_t count) {
    static constexpr std::array kWords{
        "adminStatus", "operStatus",  "description", "mtu",       "speed",
        "duplex",      "lastChange",  "inOctets",    "outOctets", "inErrors",
        "outErrors",   "inDiscards",  "vlanId",      "ipAddress", "macAddress",
        "bandwidthKb", "queueLength", "clockSource", "uptime",    "alias",
    };
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i) {
        const size_t turn = i / kWords.size();
        names.push_back(kWords[i % kWords.size()] + (turn != 0 ? std::to_string(turn) : ""));
    }
    return names;
}

// Texts to ask with: copies, so that no pointer is a stored one, in an order that no branch
// predictor and no cache line follows.
class Questions {
  public:
    explicit Questions(const std::vector<std::string> &names) {
        uint32_t random = 12345;
        for (size_t i = 0; i < kCount; ++i) {
            random = random * 1664525u + 1013904223u;
            texts_.push_back(names[(random >> 8) % names.size()]);
        }
    }

    const char *next() { return texts_[at_++ % kCount].c_str(); }

  private:
    static constexpr size_t kCount = 1024;
    std::vector<std::string> texts_;
    size_t at_ = 0;
};

}  // namespace oru::bench
