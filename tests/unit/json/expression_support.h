// Evaluating expressions with variables.
#ifndef ORU_TESTS_UNIT_JSON_EXPRESSION_SUPPORT_H
#define ORU_TESTS_UNIT_JSON_EXPRESSION_SUPPORT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "tests/unit/json/support.h"

namespace oru::test {

// Texts here have single quotes where JSON has double ones.
inline std::string json(std::string text) {
    std::ranges::replace(text, '\'', '"');
    return text;
}

inline std::string shown(ORUDoValue *value) {
    std::string text = json_of(value);
    std::ranges::replace(text, '"', '\'');
    return text;
}

// Variables by the text of their reference.
class Variables {
  public:
    void set(const std::string &name, const std::string &text) {
        values_[name] = value_from(json(text));
    }
    std::string get(const std::string &name) { return shown(values_.at(name).get()); }

    static ORUDoValue *resolve(void *user, const char *text, ORUDoValue *default_value) {
        auto *self = static_cast<Variables *>(user);
        const auto found = self->values_.find(text);
        return oru_do_value_ref(found != self->values_.end() ? found->second.get() : default_value);
    }
    static void store(void *user, const char *text, ORUDoValue *value) {
        static_cast<Variables *>(user)->values_[text].reset(oru_do_value_ref(value));
    }

  private:
    std::map<std::string, Value> values_;
};

// The value as JSON, and behind it what went wrong: "{...} 101 eval_math".
class Expression : public testing::Test {
  protected:
    static std::string with_error(const Value &value, ORUDoError *error) {
        const Error owned(error);
        std::string text = value != nullptr ? shown(value.get()) : "none";
        if (owned != nullptr)
            text += " " + std::to_string(oru_do_error_get_code(owned.get())) + " " +
                    oru_do_error_get_msg(owned.get());
        return text;
    }

    // With the variables, and with nobody to ask.
    std::string eval(const std::string &expression) {
        const std::string text = json(expression);
        ORUDoError *error = nullptr;
        const Value value(oru_do_json_eval_expr(text.data(), size_of(text), Variables::resolve,
                                                Variables::store, &variables, &error));
        return with_error(value, error);
    }
    static std::string eval_alone(const std::string &expression) {
        const std::string text = json(expression);
        ORUDoError *error = nullptr;
        const Value value(
            oru_do_json_eval_expr(text.data(), size_of(text), nullptr, nullptr, nullptr, &error));
        return with_error(value, error);
    }

    Variables variables;
};

}  // namespace oru::test

#endif
