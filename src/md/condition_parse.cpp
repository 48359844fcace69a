// Conditions from text. What is wrong in a text is traced; the tree stands as far as it came.
#include <cstring>
#include <string_view>
#include <utility>

#include "frame/text.h"
#include "md/condition.h"
#include "md/tokens.h"
#include "oru/name.h"
#include "oru/nlist.h"
#include "oru/range.h"
#include "oru/rc.h"
#include "oru/value.h"

namespace {

using oru::ConditionNode;
using oru::Level;
using oru::NodeType;
using oru::Ref;
using oru::Tokens;
using oru::TokenType;

constexpr int32_t kDeepestGroup = 4;

// Each step is false when memory runs out.
class Parser {
  public:
    explicit Parser(ORUDoCondition &condition)
        : condition_(condition), open_{{condition.root, &condition.root->first_child}} {}

    bool take(TokenType type, char *&token);
    // Makes the tree that of the group at hand.
    void settle_root();

  private:
    // A group that is read, and where its next child goes.
    struct Open {
        ConditionNode *node;
        ConditionNode **end;
    };

    ConditionNode *append(NodeType type);
    bool add_leaf(NodeType type, char *&token);
    bool name_leaf(std::string_view word);
    void add_argument(char *&token);
    bool open_group();
    void close_group();
    void join(NodeType type, char *&token);
    ConditionNode &current() { return *open_[depth_].node; }

    ORUDoCondition &condition_;
    ConditionNode *leaf_ = nullptr;
    int32_t depth_ = 0;
    int32_t parens_ = 0;
    bool pending_not_ = false;
    Open open_[kDeepestGroup + 1];
};

bool Parser::take(TokenType type, char *&token) {
    switch (type) {
        case TokenType::values:
        case TokenType::size:
        case TokenType::strlen:
        case TokenType::regex:
        case TokenType::is_null:
        case TokenType::not_null:
            return add_leaf(static_cast<NodeType>(type), token);
        case TokenType::word:
        case TokenType::dots:
            add_argument(token);
            return true;
        case TokenType::open:
            return open_group();
        case TokenType::close:
            close_group();
            return true;
        case TokenType::op_and:
            join(NodeType::all, token);
            return true;
        case TokenType::op_or:
            join(NodeType::any, token);
            return true;
        case TokenType::op_not:
            pending_not_ = true;
            return true;
        case TokenType::bar:
        case TokenType::comma:
        case TokenType::ordered_by:
        case TokenType::unique:
        case TokenType::default_value:
            break;
    }
    return true;
}

// A child of the group at hand, negated when `not` stood in front of it.
ConditionNode *Parser::append(NodeType type) {
    auto *node = oru::make_element<ConditionNode>();
    if (node == nullptr)
        return nullptr;
    node->type = type;
    node->negate = std::exchange(pending_not_, false) ? 1 : 0;
    *open_[depth_].end = node;
    open_[depth_].end = &node->next;
    return node;
}

bool Parser::add_leaf(NodeType type, char *&token) {
    leaf_ = append(type);
    if (leaf_ == nullptr)
        return false;
    leaf_->op_str = std::exchange(token, nullptr);
    return name_leaf(leaf_->op_str);
}

bool Parser::name_leaf(std::string_view word) {
    const size_t dot = word.rfind('.');
    if (dot == std::string_view::npos)
        return true;
    ORUDoName *name = oru_do_name_new_l(word.data(), static_cast<int32_t>(dot));
    leaf_->prop_name = name;
    if (name == nullptr)
        return false;
    ORUDoNlist *names = condition_.ext_prop_names;
    return oru_do_nlist_index_of(names, oru_do_name_get_strname(name)) >= 0 ||
           oru_do_nlist_add(names, name) >= 0;
}

void Parser::add_argument(char *&token) {
    if (leaf_ == nullptr)
        return;
    if (leaf_->token_count == ConditionNode::kMostTokens) {
        ORU_TRACE(Level::failure, "Too many range tokens\n");
        return;
    }
    leaf_->tokens[leaf_->token_count++] = std::exchange(token, nullptr);
}

bool Parser::open_group() {
    ++parens_;
    if (depth_ == kDeepestGroup) {
        ORU_TRACE(Level::failure, "Condition deeper than %d\n", static_cast<int>(depth_));
        return true;
    }
    ConditionNode *group = append(NodeType::group);
    if (group == nullptr)
        return false;
    open_[++depth_] = {group, &group->first_child};
    return true;
}

void Parser::close_group() {
    if (depth_ > 0) {
        --depth_;
    } else if (parens_ < 1) {
        ORU_TRACE(Level::failure, "Non-matching parenthesis\n");
    }
    --parens_;
}

// The first operator makes the group what it is. The name that may stand in front of it, as in
// "a.and", means nothing here.
void Parser::join(NodeType type, char *&token) {
    if (current().op_str == nullptr) {
        current().type = type;
        if (const char *dot = std::strrchr(token, '.'))
            std::memmove(token, dot + 1, std::strlen(dot));
        current().op_str = std::exchange(token, nullptr);
    } else if (current().type != type) {
        ORU_TRACE(Level::failure, "Mixed operation\n");
    }
}

// A group without an operator gives way to its first child, behind which the others stay, and one
// that is not closed takes the place of all around it.
void Parser::settle_root() {
    ConditionNode **place = depth_ > 0 ? &open_[depth_ - 1].node->first_child : &condition_.root;
    while (*place != &current())
        place = &(*place)->next;
    if (current().op_str == nullptr && current().first_child != nullptr)
        place = &current().first_child;
    ConditionNode *root = std::exchange(*place, nullptr);
    oru::free_nodes(condition_.root);
    condition_.root = root;
}

bool read_tokens(ORUDoCondition &condition) {
    Tokens tokens(condition.expr);
    Parser parser(condition);
    for (int32_t i = 0; i < tokens.count; ++i) {
        if (!parser.take(tokens.type(i), tokens.texts[i]))
            return false;
    }
    parser.settle_root();
    return tokens.code != ORU_RC_MALLOC;
}

void strip_quotes(char *text) {
    size_t length = std::strlen(text);
    if (text[0] == '"')
        std::memmove(text, text + 1, length--);
    if (length > 0 && text[length - 1] == '"')
        text[length - 1] = '\0';
}

// What its arguments mean to a leaf.
bool finish_leaf(ConditionNode &leaf) {
    if (leaf.type == NodeType::regex) {
        strip_quotes(leaf.tokens[0]);
        ORU_TRACE(Level::detail, "Compiling regex %s\n", leaf.tokens[0]);
        oru::compile_regex(leaf);
        return true;
    }
    leaf.range = oru_do_range_new_toks_t(ORU_DO_TYPE_UNKNOWN, leaf.tokens, leaf.token_count);
    return leaf.range != nullptr;
}

bool finish(ConditionNode *first) {
    for (auto *node = first; node != nullptr; node = node->next) {
        if ((node->token_count > 0 && !finish_leaf(*node)) || !finish(node->first_child))
            return false;
    }
    return true;
}

}  // namespace

ORUDoCondition *oru_do_condition_new(const char *str) {
    ORU_REQUIRE(str);
    return oru_do_condition_new_l(str, static_cast<int32_t>(std::strlen(str)));
}

ORUDoCondition *oru_do_condition_new_l(const char *str, int32_t length) {
    ORU_REQUIRE(str);
    const size_t size = length > 0 ? strnlen(str, static_cast<size_t>(length)) : 0;
    auto condition = oru::make_condition();
    if (!condition || (condition->expr = oru::duplicate(str, size)) == nullptr)
        return nullptr;
    const bool whole = read_tokens(*condition) && finish(condition->root);
    return whole ? condition.release() : nullptr;
}
