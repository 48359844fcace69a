// The constraints of the sample model say what their authors mean: nothing in them was left out.
#include <oru/prop_meta.h>

#include <functional>

#include "tests/unit/md/constraint_support.h"
#include "tests/unit/md/store_support.h"

namespace {

using namespace oru::test;

class SampleConstraints : public testing::Test {
  protected:
    void SetUp() override {
        ORUMdPkgBundle *bundle = nullptr;
        EXPECT_EQ(oru_md_load_dir(NETWORK_PACKAGES, "", ".oru2d", &bundle), 0);
        ASSERT_NE(bundle, nullptr);
        packages_ = bundle->pkgs;
    }
    ~SampleConstraints() override { oru_md_free(); }

    using Visit = std::function<void(ORUDoConstraint *constraint)>;

    static int visit_list(ORUDoConstraintList *list, const Visit &visit) {
        const int32_t count = list != nullptr ? oru_do_constraint_list_get_len(list) : 0;
        for (int32_t i = 0; i < count; ++i) {
            auto *constraint = oru_do_constraint_list_get_constraint(list, i);
            SCOPED_TRACE(oru_do_constraint_get_str(constraint));
            visit(constraint);
        }
        return count;
    }

    static int visit_types(ORUMdTypedefMeta *first, const Visit &visit) {
        int count = 0;
        for (auto *type = first; type != nullptr; type = type->next) {
            count += visit_list(type->constraint_list, visit);
            for (auto *member = type->complex_els; member != nullptr; member = member->next)
                count += visit_list(member->constraint_list, visit);
        }
        return count;
    }

    static int visit_mr(const ORUMdMrMeta &mr, const Visit &visit) {
        int count = 0;
        for (auto *chain : {mr.primary_keys, mr.secondary_keys, mr.cd_attrs, mr.od_attrs}) {
            for (auto *attr = chain; attr != nullptr; attr = attr->next)
                count += visit_list(oru_md_get_attr_constraints(attr), visit);
        }
        for (auto *ref = mr.refs; ref != nullptr; ref = ref->next)
            count += visit_list(oru_md_get_ref_constraints(ref), visit);
        return count;
    }

    // How many there are.
    int visit_all(const Visit &visit) const {
        int count = 0;
        for (auto *package = packages_; package != nullptr; package = package->next) {
            count += visit_types(package->typedefs, visit);
            for (auto *mr = package->mrs; mr != nullptr; mr = mr->next)
                count += visit_mr(*mr, visit);
        }
        return count;
    }

  private:
    ORUMdPkgMeta *packages_ = nullptr;
};

TEST_F(SampleConstraints, EveryRangeHoldsAValue) {
    const int count = visit_all([](ORUDoConstraint *constraint) {
        for (auto *range :
             {oru_do_constraint_get_values(constraint), oru_do_constraint_get_size(constraint),
              oru_do_constraint_get_strlen(constraint)}) {
            if (range != nullptr) {
                EXPECT_NE(oru_do_range_get_first_value(range), nullptr);
            }
        }
    });
    EXPECT_GE(count, 60);
}

TEST_F(SampleConstraints, EveryKeywordIsRead) {
    visit_all([](ORUDoConstraint *constraint) {
        const std::string text = oru_do_constraint_get_str(constraint);
        const auto has = [&](const char *keyword) { return text.find(keyword) != text.npos; };
        EXPECT_EQ(has("values("), oru_do_constraint_get_values(constraint) != nullptr);
        EXPECT_EQ(has("size("), oru_do_constraint_get_size(constraint) != nullptr);
        EXPECT_EQ(has("strlen("), oru_do_constraint_get_strlen(constraint) != nullptr);
        EXPECT_EQ(has("regex("), oru_do_constraint_get_regex(constraint) != nullptr);
        EXPECT_EQ(has("default("), oru_do_constraint_get_default_value(constraint) != nullptr);
    });
}

TEST_F(SampleConstraints, EveryDefaultIsAllowed) {
    visit_all([](ORUDoConstraint *constraint) {
        auto *value = oru_do_constraint_get_default_value(constraint);
        if (value != nullptr) {
            EXPECT_EQ(oru_do_constraint_eval(constraint, nullptr, value, nullptr), 0);
        }
    });
}

}  // namespace
