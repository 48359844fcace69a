#include <cinttypes>
#include <cstdio>

#include "oruplatform/poolheap.h"
#include "platform/chunk_pool.h"
#include "platform/codes.h"
#include "platform/tag_counters.h"
#include "platform/tag_names.h"

using namespace oru::platform;

namespace {

void add_stats(poolheap_stats_t &sum, const poolheap_stats_t &stats) {
    sum.live_blocks += stats.live_blocks;
    sum.live_bytes += stats.live_bytes;
    sum.peak_bytes += stats.peak_bytes;
    sum.total_blocks += stats.total_blocks;
}

poolheap_stats_t sum_of_slots() {
    poolheap_stats_t sum{};
    for (uint32_t slot = 0; slot < slot_count(); slot++) {
        add_stats(sum, slot_stats(slot));
    }
    return sum;
}

const char *name_or_dash(uint32_t tag) {
    const char *name = tag_name(tag);
    return name != nullptr ? name : "-";
}

void print_row(FILE *out, const char *tag, const char *name, const poolheap_stats_t &stats) {
    fprintf(out, "%-10s  %-26s %12" PRIu64 " %14" PRIu64 " %14" PRIu64 " %14" PRIu64 "\n", tag,
            name, stats.live_blocks, stats.live_bytes, stats.peak_bytes, stats.total_blocks);
}

void print_tags(FILE *out) {
    fprintf(out, "%-10s  %-26s %12s %14s %14s %14s\n", "tag", "name", "live blocks", "live bytes",
            "peak bytes", "total blocks");
    for (uint32_t slot = 1; slot < slot_count(); slot++) {
        char tag[16];
        snprintf(tag, sizeof tag, "0x%08x", g_slot_tags[slot]);
        print_row(out, tag, name_or_dash(g_slot_tags[slot]), slot_stats(slot));
    }
    if (const poolheap_stats_t others = slot_stats(0); others.total_blocks != 0) {
        print_row(out, "", "(other tags)", others);
    }
    print_row(out, "", "sum", sum_of_slots());
}

void print_pool(FILE *out, const chunk_stats_t &pool) {
    fprintf(out, "0x%08x  %-26s %8zu %8" PRIu64 " %12" PRIu64 " %12" PRIu64 " %14" PRIu64 "\n",
            pool.tag, name_or_dash(pool.tag), pool.element_size, pool.slabs, pool.live, pool.peak,
            pool.total_takes);
}

void print_pools(FILE *out) {
    const Pool *pool = first_pool();
    if (pool == nullptr) {
        return;
    }
    fprintf(out, "\n%-10s  %-26s %8s %8s %12s %12s %14s\n", "pool", "name", "size", "slabs", "live",
            "peak", "total takes");
    for (; pool != nullptr; pool = next_pool(*pool)) {
        print_pool(out, pool_stats(*pool));
    }
}

}  // namespace

void poolheap_report(FILE *out) {
    FILE *target = out != nullptr ? out : stderr;
    print_tags(target);
    print_pools(target);
    fflush(target);
}

int32_t poolheap_tag_stats(uint32_t tag, poolheap_stats_t *out_stats) {
    if (out_stats == nullptr) {
        return kInvalid;
    }
    const uint32_t slot = find_tag_slot(tag);
    *out_stats = slot == 0 ? poolheap_stats_t{} : slot_stats(slot);
    return slot == 0 ? kNotFound : kOk;
}

int32_t poolheap_total_stats(poolheap_stats_t *out_stats) {
    if (out_stats == nullptr) {
        return kInvalid;
    }
    *out_stats = sum_of_slots();
    return kOk;
}

uint64_t poolheap_live_blocks(void) {
    return sum_of_slots().live_blocks;
}

uint64_t poolheap_live_bytes(void) {
    return sum_of_slots().live_bytes;
}
