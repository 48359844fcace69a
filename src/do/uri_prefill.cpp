// URIs whose segments their maker knows are pre-filled instead of parsed.
#include "do/uri.h"

std::string_view oru::uri_prefix(const ORUDoUri &uri, int32_t n) {
    if (n < 1)
        return "";
    // A pre-filled end may lie behind the text.
    return std::string_view(uri.uri_str).substr(0, size_t{uri.segment_table[n - 1].end} + 1);
}

void oru::uri_copy_segments(ORUDoUri &dst, const ORUDoUri &src, int32_t n) {
    if (!uri_is_parsed(src) || src.num_segments < n)
        return;
    for (ORUDoUriSegment &segment : dst.segment_table)
        deref(std::exchange(segment.keys, nullptr));
    for (int32_t i = 0; i < n; ++i) {
        dst.segment_table[i] = src.segment_table[i];
        ref(dst.segment_table[i].keys);
    }
    dst.segments = dst.segment_table;
    dst.num_segments = n;
}

bool oru::uri_set_parent_from_prefix(ORUDoUri &dst, const ORUDoUri &src, int32_t n) {
    if (n < 1 || !uri_is_parsed(src) || src.num_segments < n)
        return true;
    const std::string_view prefix = uri_prefix(src, n);
    const StorageClass storage = uri_texts.class_for(roomy(prefix.size()));
    UriText parent = parent_text(dst);
    if (storage != StorageClass::heap)
        return parent.store(prefix, storage);
    // On the heap the whole text is copied and then ended at the cut.
    if (!parent.store(src.uri_str, storage))
        return false;
    parent.text[prefix.size()] = '\0';
    return true;
}

bool oru::uri_prefill(ORUDoUri &dst, const ORUDoUri &src, int32_t n) {
    uri_copy_segments(dst, src, n);
    return uri_set_parent_from_prefix(dst, src, n);
}

void oru::uri_append_segment(ORUDoUri &dst, size_t start, size_t end, std::string_view ref_name,
                             Ref<ORUDoNvlist> keys) {
    ORUDoUriSegment &segment = dst.segment_table[dst.num_segments++];
    segment.start = static_cast<uint16_t>(start);
    segment.end = static_cast<uint16_t>(end);
    segment.ref_name[ref_name.copy(segment.ref_name, kUriRefNameRoom - 1)] = '\0';
    segment.keys = keys.release();
}
