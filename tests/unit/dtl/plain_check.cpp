#include "tests/unit/dtl/plain_check.h"

#include <random>

#include "oru/dtree.h"
#include "oru/rc.h"

namespace oru::test {
namespace {

void collect(ORUDoDtree *node, std::vector<std::string> &out) {
    for (int32_t i = 0; i < oru_do_dtree_get_child_count(node); ++i) {
        ORUDoDtree *child = oru_do_dtree_get_child(node, i);
        if (oru_do_dtree_is_hidden(child) != 0)
            continue;
        if (ORUDoUri *uri = oru_do_dtree_get_mr_uri(child))
            out.emplace_back(oru_do_uri_get_uri_str(uri));
        collect(child, out);
    }
}

// "/sys?as" and "/sys/as?:net/M" are the same collection, with rows "/sys/as;id=1".
std::string row_base(const std::string &uri) {
    const size_t query = uri.find('?');
    const std::string base = uri.substr(0, query);
    const std::string ref = uri.substr(query + 1);
    return ref[0] == ':' ? base : base + "/" + ref;
}

FakeValue some_value(std::mt19937 &random) {
    switch (random() % 4) {
        case 0:
            return {};
        case 1:
            return "t" + std::to_string(random() % 3);
        default:
            return static_cast<int64_t>(random() % 9);
    }
}

FakeValue some_peer(std::mt19937 &random) {
    switch (random() % 6) {
        case 0:
            return {};
        case 1:
            return std::vector<UriText>{{"/r/p1"}, {"/r/p2"}};
        case 2:
            return std::vector<UriText>{{"/r?pp"}, {"/r?qq"}};
        case 3:
            return "/r/p3";
        case 4:
            return UriText{"/r/p4"};
        default:
            return random() % 8 == 0 ? FakeValue(int64_t{5}) : FakeValue();
    }
}

Attributes some_attributes(std::mt19937 &random) {
    Attributes attributes;
    for (const char *name : {"k", "m", "o", "k >"}) {
        if (random() % 5 != 0)
            attributes[name] = some_value(random);
    }
    attributes["pr"] = some_peer(random);
    return attributes;
}

void add_failures(FakeSystem &system, const std::string &uri, std::mt19937 &random) {
    constexpr int32_t kCodes[] = {1, 102, 105, 106, 33, 10001};
    for (const char *call : {"open ", "cfg ", "oper ", "action ", "cfg_props ", "oper_props "}) {
        if (random() % 12 == 0)
            system.failures[call + uri] = kCodes[random() % std::size(kCodes)];
    }
}

}  // namespace

LibraryWalk::LibraryWalk(const DocNode &doc, FakeSystem &system, const Params &params)
    : system_(system),
      doc_(make_tree(doc)),
      params_(oru_do_nvlist_new()),
      ctx_(oru_dtl_ctx_new(doc_.get(), system.data(), system.coll())) {
    for (const auto &[name, value] : params)
        oru_do_nvlist_add(params_.get(), name.c_str(), make_value(value).get());
}

std::string LibraryWalk::tree() const {
    return show_children(ctx_->dtree_node);
}

bool check_walk(const DocNode &doc, FakeSystem &system, const Params &params,
                const std::function<int32_t()> &count) {
    LibraryWalk library(doc, system, params);
    PlainWalk plain(doc, system, params);
    system.take_calls();
    std::string counts;
    for (int call = 0; call < kMostCalls; ++call) {
        const int32_t asked = count();
        if (call < 20)
            counts += " " + std::to_string(asked);
        const int32_t rc = library.next(asked);
        const int32_t expected = plain.next(asked);
        EXPECT_EQ(rc, expected);
        EXPECT_EQ(system.take_calls(), plain.take_calls());
        EXPECT_EQ(library.tree(), plain.tree());
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "call " << call << ", counts" << counts << "\n" << describe(doc);
            return false;
        }
        if (rc == ORU_RC_NO_MORE_VALUE) {
            library.end();
            plain.end();
            EXPECT_EQ(system.take_calls(), plain.take_calls());
            EXPECT_EQ(system.open_cursors(), 0);
            return !testing::Test::HasFailure();
        }
    }
    ADD_FAILURE() << "no end, counts" << counts << "\n" << describe(doc);
    return false;
}

std::vector<std::string> delivered(const DocNode &doc, FakeSystem &system, const Params &params,
                                   const std::function<int32_t()> &count) {
    LibraryWalk library(doc, system, params);
    std::vector<std::string> rows;
    for (int call = 0; call < kMostCalls; ++call) {
        if (library.next(count()) != ORU_OK)
            return rows;
        collect(library.ctx()->dtree_node, rows);
    }
    ADD_FAILURE() << "no end\n" << describe(doc);
    return rows;
}

void populate(FakeSystem &system, Population &population) {
    system.provide = [&](const std::string &uri) {
        if (!population.seen.insert(uri).second)
            return;
        std::mt19937 random(population.seed ^ static_cast<uint32_t>(std::hash<std::string>()(uri)));
        if (population.failing)
            add_failures(system, uri, random);
        if (uri.find('?') == std::string::npos) {
            if (random() % 4 != 0)
                system.config[uri] = some_attributes(random);
            if (random() % 4 != 0)
                system.oper[uri] = some_attributes(random);
            return;
        }
        const int rows =
            static_cast<int>(random() % static_cast<uint32_t>(population.most_rows + 1));
        for (int i = 1; i <= rows; ++i) {
            system.rows[uri].push_back(
                {row_base(uri) + ";id=" + std::to_string(i), some_attributes(random)});
        }
    };
}

}  // namespace oru::test
