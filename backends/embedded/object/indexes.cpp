#include "indexes.h"

namespace embedded {

namespace {

constexpr size_t kLengthBytes = 4;

std::string length_of(const std::string &key) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(key.size() >> shift);
    return bytes;
}

}  // namespace

std::string secondary_key(const Place &collection, const ResourceType &type, size_t group,
                          ORUDoProperties *props) {
    Place values = begin_secondary_key(collection, group);
    for (const size_t index : type.secondary_keys[group]) {
        const AttributeType &attribute = type.attributes[index];
        ORUDoValue *const value = oru_do_properties_get_value_n(props, attribute.object.get());
        if (value == nullptr || !add_key_value(values, attribute, value))
            return {};
    }
    return values.key;
}

void add_secondary_keys(const Place &place, const Draft::State &state, IndexKeys &keys) {
    const Place collection = collection_of(place);
    for (size_t group = 0; group < state.type->secondary_keys.size(); group++) {
        std::string key = secondary_key(collection, *state.type, group, state.props.get());
        if (!key.empty())
            keys.insert(std::move(key));
    }
}

Range links_to(const std::string &key) {
    return range_of('l' + length_of(key) + key);
}

std::string link(const std::string &to, const std::string &from) {
    return 'l' + length_of(to) + to + from;
}

std::string source_of_link(const std::string &link_key) {
    size_t length = 0;
    for (size_t i = 1; i <= kLengthBytes; i++)
        length = length << 8 | static_cast<unsigned char>(link_key.at(i));
    return link_key.substr(1 + kLengthBytes + length);
}

}  // namespace embedded
