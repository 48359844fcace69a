// Taking a URI with three segments and two keys apart, beside a parser of general URIs that finds
// the segments of the same text and makes no keys; and the memory that a URI takes. Tracing is
// off, as it is by default, and all pools are sized.
#include <oru/nvlist.h>
#include <oru/strbuf.h>
#include <oru/uri.h>
#include <oru/value.h>
#include <oruplatform/chunk.h>
#include <oruplatform/tracelet.h>

#include "bench/memory.h"
#include "bench/ratios.h"

#ifdef ORU_BENCH_URIPARSER
#include <uriparser/Uri.h>
#endif

namespace {

constexpr char kText[] = "/devices;deviceId=router7/interfaces;name=eth0/counters";
constexpr char kTextWithoutKeys[] = "/devices/interfaces/counters";

// Made, parsed at the first inspection, released.
void parse(benchmark::State &state) {
    for (auto _ : state) {
        ORUDoUri *uri = oru_do_uri_new(kText);
        if (oru_do_uri_get_segment_count(uri) != 3)
            state.SkipWithError("not parsed");
        oru_do_uri_deref(uri);
    }
}

#ifdef ORU_BENCH_URIPARSER
void parse_with_uriparser(benchmark::State &state) {
    for (auto _ : state) {
        UriUriA uri;
        const char *error = nullptr;
        if (uriParseSingleUriA(&uri, kText, &error) != URI_SUCCESS)
            state.SkipWithError("not parsed");
        benchmark::DoNotOptimize(uri.pathHead);
        uriFreeUriMembersA(&uri);
    }
}
#endif

void size_pools() {
    for (auto *init :
         {init_chunk_poolheap_oru_do_uri, init_chunk_poolheap_oru_do_uri_sml_misc,
          init_chunk_poolheap_oru_do_uri_misc, init_chunk_poolheap_oru_do_strbuf,
          init_chunk_poolheap_oru_do_strbuf_misc, init_chunk_poolheap_oru_do_nvlist,
          init_chunk_poolheap_oru_do_nvlist_item, init_chunk_poolheap_oru_do_value,
          init_chunk_poolheap_oru_do_value_sml_misc, init_chunk_poolheap_oru_do_value_misc}) {
        init(1024, CHUNK_FLAG_GROW);
    }
}

void print_memory(const char *what, const char *text, bool parsed) {
    const auto make = [text, parsed](int) {
        ORUDoUri *uri = oru_do_uri_new(text);
        if (parsed)
            oru_do_uri_get_segment_count(uri);
    };
    oru::bench::print_bytes_of(what, "pools", size_pools, make);
    oru::bench::print_bytes_of(
        what, "heap", [] {}, make);
}

}  // namespace

int main(int argc, char **argv) {
    tracelet_set_threshold(0);
    print_memory("URI, not parsed", kTextWithoutKeys, false);
    print_memory("URI, three segments", kTextWithoutKeys, true);
    print_memory("URI, three segments, two keys", kText, true);
    size_pools();
    oru::bench::compare("parse a URI/ours", parse);
#ifdef ORU_BENCH_URIPARSER
    oru::bench::compare("parse a URI/uriparser", parse_with_uriparser);
    oru::bench::expect("parse a URI", "uriparser", oru::bench::at_most(1.5));
#endif
    return oru::bench::run_all(argc, argv);
}
