#include "tests/unit/dtl/plain_walk.h"

#include <algorithm>

namespace oru::test {
namespace {

const DocNode *next_sibling(const DocNode &dtl_node, const DocNode *ch) {
    const auto &all = dtl_node.children;
    return ch + 1 == all.data() + all.size() ? nullptr : ch + 1;
}

bool has_inner_mr_get(const DocNode &node) {
    for (const DocNode &child : node.children) {
        if (child.op != 0 && child.op != 1 && child.op != 9 && child.op != 17)
            return true;
        if (has_inner_mr_get(child))
            return true;
    }
    return false;
}

bool is_collection_op(const DocNode &node) {
    return node.op >= 10 && node.op <= 17;
}

bool stop(int32_t code, const DocNode &node) {
    return code == 33 || code > (node.continue_on_error ? 9999 : 1);
}

size_t count_where(const DocNode &node) {
    size_t count = node.where.empty() ? 0 : 1;
    for (const DocNode &child : node.children)
        count += count_where(child);
    return count;
}

}  // namespace

PlainWalk::PlainWalk(const DocNode &doc, FakeSystem &tables,
                     const std::map<std::string, FakeValue> &params)
    : doc_(doc), tables_(tables), params_(params) {
    root_ = &nodes_.emplace_back(PlainNode{.name = ""});
    where_room_ = count_where(doc);
}

PlainWalk::~PlainWalk() {
    end();
}

void PlainWalk::end() {
    give_up(top_.child);
}

PlainNode *PlainWalk::add(PlainNode &parent, const std::string &name) {
    PlainNode &node = nodes_.emplace_back(PlainNode{.name = name, .parent = &parent});
    parent.children.push_back(&node);
    ++node_added_;
    return &node;
}

void PlainWalk::close(Ctx &ctx) {
    if (ctx.cursor == nullptr)
        return;
    calls_.emplace_back("close");
    ctx.cursor.reset();
}

void PlainWalk::give_up(std::unique_ptr<Ctx> &ctx) {
    if (ctx == nullptr)
        return;
    give_up(ctx->child);
    close(*ctx);
    ctx.reset();
}

int32_t PlainWalk::number_of(const std::string &param) const {
    const auto value = resolve(param, nullptr);
    const int64_t *number = value ? std::get_if<int64_t>(&*value) : nullptr;
    return number != nullptr ? static_cast<int32_t>(*number) : 0;
}

int32_t PlainWalk::next(int32_t count) {
    ++call_count_;
    node_added_ = leaf_count_ = 0;
    if (doc_.children.empty() || top_.state == 2)
        return 1;
    calls_.emplace_back("context");
    int32_t tries = 10;
    std::pair<const DocNode *, const PlainNode *> remembered{nullptr, nullptr};
    int32_t rc = 0;
    for (;;) {
        retry_ = false;
        rc = walk(count, top_, doc_, *root_);
        if (top_.child == nullptr && top_.state != 1) {
            top_.state = 2;
        } else {
            std::pair<const DocNode *, const PlainNode *> pair{nullptr, nullptr};
            if (top_.child != nullptr)
                pair = {&doc_, root_};
            if (!retry_ && pair == remembered) {
                if (--tries == 0)
                    break;
            }
            if (retry_)
                node_added_ = 0;
            remembered = pair;
        }
        if (count > 0 && leaf_count_ == 0)
            node_added_ = 0;
        if (rc != 0 || top_.state == 2 || node_added_ != 0)
            break;
    }
    if (call_count_ >= 2 && node_added_ == 0 && (rc == 0 || rc == 1)) {
        root_->children.clear();
        return 1;
    }
    return rc;
}

int32_t PlainWalk::invoke(Ctx &ctx, const DocNode &ch, PlainNode &parent, int32_t fetch,
                          PlainNode **row) {
    if (ch.error != 0) {
        *row = add(parent, ch.name);
        (*row)->error = {ch.error, "bad"};
        return 0;
    }
    if (ch.op == 1) {
        *row = add(parent, ch.name);
        return 0;
    }
    if (!ch.addressed || ch.uri.empty())
        return 0;
    const Address address = address_of(ch, parent);
    if (address.failed)
        return 100;
    if (address.uri)
        return dispatch({&ctx, &ch, *address.uri, &parent, fetch, row});
    if (!address.list)
        return 0;
    // An address whose cursor is left open ends the list; the next fetch goes on there.
    if (ctx.cursor == nullptr)
        ctx.list_at = 0;
    int32_t rc = 0;
    for (size_t i = ctx.list_at; i < address.list->size(); ++i) {
        ctx.list_at = i;
        rc = dispatch({&ctx, &ch, (*address.list)[i], &parent, fetch, row});
        if (rc > 1 || ctx.cursor != nullptr)
            return rc;
    }
    return rc;
}

int32_t PlainWalk::walk(int32_t count, Ctx &parent_ctx, const DocNode &dtl_node,
                        PlainNode &parent) {
    // 1 to 4
    const int32_t entry_added = node_added_;
    if (parent_ctx.child == nullptr)
        parent_ctx.child = std::make_unique<Ctx>();
    Ctx &ctx = *parent_ctx.child;
    ctx.state = 2;
    const DocNode *ch = dtl_node.children.empty() ? nullptr : dtl_node.children.data();
    const DocNode *resume = ctx.dtl_ch;
    const bool no_limit = count < 1;
    int32_t rc = 0;

    int32_t max_batches = 0;
    bool has_inner = false;
    int32_t fetch = 0;
    PlainNode *row = nullptr;
    PlainNode *resumed = nullptr;
    PlainNode *c = nullptr;
    PlainNode *behind = nullptr;  // the rest of the iteration
    bool last = false;
    int32_t delta = 0;
    PlainNode *stop_at = nullptr;
    const auto child_stopped = [&] { return ctx.child != nullptr && ctx.child->state == 1; };
    const auto take_next = [&] {
        PlainNode *taken = behind;
        if (taken != nullptr)
            behind = parent.next(taken);
        return taken;
    };
    const auto hide_behind_c = [&] {
        if (parent.has(c))
            parent.hide_behind(c, true);
    };

    enum { kSibling = 100, kEnd = 27 };
    int32_t step = ch != nullptr ? 5 : kEnd;
    for (;;) {
        switch (step) {
            case kSibling:
                ch = next_sibling(dtl_node, ch);
                step = ch != nullptr ? 5 : kEnd;
                break;
            case 5:
                max_batches = ch->max_batches_param.empty() ? ch->max_batches
                                                            : number_of(ch->max_batches_param);
                step = 6;
                break;
            case 6:
                row = resumed = nullptr;
                has_inner = has_inner_mr_get(*ch);
                step = 7;
                break;
            case 7:
                step = ch->op == 0 ? kSibling : 8;
                break;
            case 8:
                step = 9;
                if (max_batches >= 1 && ctx.batches >= max_batches) {
                    ctx.batches = 0;
                    rc = 1;
                    step = kEnd;
                }
                break;
            case 9:
                step = 10;
                if (has_inner || no_limit) {
                    fetch = count;
                } else if (leaf_count_ >= count) {
                    ctx.state = 1;
                    // The place of the last call stands as long as it was not reached.
                    if (resume == nullptr) {
                        ctx.dtl_ch = ch;
                        ctx.dtree_ch = nullptr;
                    }
                    rc = 0;
                    step = kEnd;
                } else {
                    fetch = count - leaf_count_;
                }
                break;
            case 10:
                if (fetch == -1) {
                    fetch = ch->batch_size_param.empty() ? ch->batch_size
                                                         : number_of(ch->batch_size_param);
                    fetch = std::max(fetch, 0);
                }
                step = 11;
                break;
            case 11:
                step = 12;
                if (resume == nullptr)
                    break;
                if (ch != resume) {
                    step = kSibling;
                    break;
                }
                row = ctx.dtree_ch;
                ctx.dtree_ch = nullptr;
                if (row != nullptr && !parent.has(row)) {
                    // The row went, and with it what stopped below.
                    row = nullptr;
                    give_up(ctx.child);
                    if (ctx.cursor == nullptr) {
                        resume = nullptr;
                        step = kSibling;
                    }
                } else if (row != nullptr && is_collection_op(*resume)) {
                    while (parent.children.front() != row)
                        parent.children.erase(parent.children.begin());
                }
                resumed = row;
                break;
            case 12:
                step = row == nullptr ? 13 : 15;
                break;
            case 13:
                rc = invoke(ctx, *ch, parent, fetch, &row);
                step = 14;
                break;
            case 14:
                step = 15;
                if (stop(rc, *ch))
                    step = 29;
                break;
            case 15:
                if (!has_inner)
                    leaf_count_ += node_added_ - entry_added;
                step = 16;
                break;
            case 16:
                step = 17;
                if (row == nullptr || (!has_inner && !no_limit && leaf_count_ == 0)) {
                    if (count > 0)
                        parent.hidden = true;
                    if (ctx.state == 1) {  // a cursor is open, with rows that are no nodes
                        ctx.dtl_ch = ch;
                        ctx.dtree_ch = nullptr;
                        step = kEnd;
                        break;
                    }
                    close(ctx);
                    ctx.batches = 0;
                    resume = nullptr;
                    step = kSibling;
                }
                break;
            case 17:
                row->hidden = false;
                parent.hide_behind(row, false);
                behind = parent.next(nullptr);
                last = false;
                delta = 0;
                stop_at = nullptr;
                step = behind != nullptr ? 18 : 23;
                break;
            case 18:
                c = take_next();
                last = true;
                step = 19;
                while (row != nullptr) {
                    if (c == row) {
                        row = nullptr;
                        break;
                    }
                    if (count > 0 || ch->return_mode == 1)
                        c->hidden = true;
                    if (behind == nullptr) {
                        stop_at = nullptr;
                        delta = 0;
                        step = 23;
                        break;
                    }
                    c = take_next();
                }
                break;
            case 19:
                // What stopped below stopped in the row to go on with.
                if (c != resumed)
                    give_up(ctx.child);
                resumed = nullptr;
                rc = walk(count, ctx, *ch, *c);
                delta = node_added_ - entry_added;
                step = 20;
                break;
            case 20:
                step = 21;
                if (count <= 0)
                    break;
                if (has_inner && leaf_count_ >= count) {
                    if (child_stopped()) {
                        hide_behind_c();
                        stop_at = c;
                        ctx.state = 1;
                        step = 23;
                    } else if (PlainNode *next = take_next()) {
                        stop_at = next;
                        ctx.state = 1;
                        hide_behind_c();
                        step = 23;
                    } else {
                        step = 22;
                    }
                } else if (ch->return_w_child && parent.has(c) && !c->children.empty() &&
                           std::all_of(c->children.begin(), c->children.end(),
                                       [](const PlainNode *node) { return node->hidden; })) {
                    c->hidden = true;
                }
                break;
            case 21:
                step = 22;
                if (ch->return_w_child && parent.has(c) && c->children.empty()) {
                    c->hidden = true;
                    if (delta == 1) {
                        --node_added_;
                        if (ch->batch_size == 1)
                            retry_ = true;
                    }
                    break;
                }
                if (count != 0 && ch->return_mode == 1) {
                    if (delta != 0) {
                        stop_at = child_stopped() ? c : behind;
                    } else {
                        if (ctx.dtree_node != c)
                            ++node_added_;
                        stop_at = behind;
                        if (stop_at != nullptr)
                            give_up(ctx.child);
                    }
                    ctx.dtree_node = c;
                    hide_behind_c();
                    if (stop_at != nullptr) {
                        ctx.state = 1;
                        step = 23;
                        break;
                    }
                }
                if (child_stopped()) {
                    stop_at = c;
                    if (!no_limit || ch->return_w_child)
                        hide_behind_c();
                    ctx.state = 1;
                    step = 23;
                }
                break;
            case 22:
                if (ch->return_mode == 1 && node_added_ == 1) {
                    if (ctx.cursor == nullptr) {
                        step = kEnd;
                    } else {
                        ctx.state = 1;
                        stop_at = nullptr;
                        step = 23;
                    }
                } else if (stop(rc, *ch)) {
                    step = 29;
                } else if (behind != nullptr) {
                    step = 18;
                } else {
                    stop_at = nullptr;
                    step = 23;
                }
                break;
            case 23:
                if (max_batches >= 2 && ctx.batches == max_batches) {
                    add(parent, "_maxBatch")->error = {1, "Last batch of " + ch->name};
                    --node_added_;
                }
                step = 24;
                break;
            case 24:
                step = 25;
                if (ctx.state == 1) {
                    if (stop_at != nullptr) {
                        ctx.dtl_ch = ch;
                        ctx.dtree_ch = stop_at;
                    } else {
                        ctx.dtl_ch = last ? ch : next_sibling(dtl_node, ch);
                        ctx.dtree_ch = nullptr;
                    }
                    step = kEnd;
                }
                break;
            case 25:
                step = 26;
                if (ctx.cursor == nullptr) {
                    ctx.batches = 0;
                    resume = nullptr;
                    step = kSibling;
                }
                break;
            case 26:
                if (delta > 0 && fetch > 0 && ctx.child == nullptr) {
                    ctx.state = 1;
                    ctx.dtl_ch = ch;
                    ctx.dtree_ch = nullptr;
                    step = kEnd;
                } else {
                    resume = nullptr;
                    step = 5;
                }
                break;
            case 29:  // a failure: with its cursor open the level goes on with the next batch
                if (ctx.state == 1) {
                    ctx.dtl_ch = ch;
                    ctx.dtree_ch = nullptr;
                }
                step = kEnd;
                break;
            default:  // 27, 28
                if (ctx.state != 1) {
                    give_up(parent_ctx.child);
                    if (dtl_node.flatten && parent.parent != nullptr)
                        flatten(*parent.parent, parent);
                }
                return rc;
        }
    }
}

}  // namespace oru::test
