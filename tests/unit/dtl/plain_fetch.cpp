#include <algorithm>

#include "tests/unit/dtl/plain_walk.h"

namespace oru::test {
namespace {

const Names kIds{"_uri", "_mr"};

Names joined(Names first, const Names &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Names selected(const Names &list, const std::optional<Names> &selection) {
    Names out;
    for (const std::string &name : list) {
        if (name[0] == '_' || !selection ||
            std::find(selection->begin(), selection->end(), name) != selection->end())
            out.push_back(name);
    }
    return out;
}

// Names and values stay side by side.
void add_values(Values &values, const Values &read, size_t names) {
    for (size_t i = 0; i < names; ++i)
        values.push_back(i < read.size() ? read[i] : FakeValue());
}

std::string list_text(const Names &names) {
    std::string text;
    for (const std::string &name : names)
        text += (text.empty() ? "" : ",") + name;
    return "[" + text + "]";
}

std::string list_text(const NamedValues &items) {
    std::string text;
    for (const auto &[name, value] : items)
        text += (text.empty() ? "" : ",") + name + ":" + show(value);
    return "{" + text + "}";
}

}  // namespace

int32_t PlainWalk::dispatch(const Fetch &fetch) {
    int32_t op = fetch.ch->op;
    if (fetch.uri.find('?') != std::string::npos && op >= 2 && op <= 8)
        op += 8;
    // Nobody would ask a cursor that is left from another address.
    if (op < 10)
        close(*fetch.ctx);
    const bool cfg = !fetch.ch->cfg.empty();
    const bool oper = !fetch.ch->oper.empty();
    switch (op) {
        case 2:
            return read_attrs(fetch);
        case 3:
        case 6:
            return cfg || oper ? read_attrs(fetch) : read_all(fetch, op);
        case 4:
        case 7:
            return cfg ? read_attrs(fetch) : read_all(fetch, op);
        case 5:
        case 8:
            return oper ? read_attrs(fetch) : read_all(fetch, op);
        case 9:
            return fetch.ch->act_name.empty() ? 0 : invoke_action(fetch, fetch.uri);
        default:
            return op >= 10 && op <= 17 ? fetch_rows(fetch) : 0;
    }
}

int32_t PlainWalk::read_all(const Fetch &fetch, int32_t op) {
    PlainNode props{.name = ""};
    PlainNode *child = add(*fetch.parent, fetch.ch->name);
    int32_t rc = 0;
    if (op == 3 || op == 4)
        rc = read_properties(false, fetch.uri, props);
    if ((rc == 0 || rc == 102) && (op == 3 || op == 5))
        rc = read_properties(true, fetch.uri, props);
    if (rc != 0 && rc != 102) {
        take_error(*child);
        return rc;
    }
    child->uri = fetch.uri;
    child->has_props = true;
    child->props = props.props;
    if (*fetch.row == nullptr)
        *fetch.row = child;
    return 0;
}

int32_t PlainWalk::read_attrs(const Fetch &fetch) {
    const DocNode &ch = *fetch.ch;
    Names names;
    Values values;
    const auto selection = selection_of(ch, *fetch.parent);
    PlainNode *child = add(*fetch.parent, ch.name);
    for (const bool oper : {false, true}) {
        const Names &list = oper ? ch.oper : ch.cfg;
        if (list.empty())
            continue;
        const bool wide = ch.op == 3 || ch.op == 6 ||
                          (oper ? ch.op == 5 || ch.op == 8 : ch.op == 4 || ch.op == 7);
        const Names asked = wide ? joined(kIds, list) : selected(list, selection);
        Values got;
        const int32_t rc = read(oper, fetch.uri, asked, oper || ch.return_default, got);
        if (rc != 0 && rc != 102) {
            take_error(*child);
            return rc;
        }
        names = joined(names, asked);
        add_values(values, got, asked.size());
    }
    fill(fetch, *child, fetch.uri, names, values, false);
    if (ch.type == ORU_DTL_NODE_PARENT_REF)
        child->parent_of = fetch.parent->uri;
    if (*fetch.row == nullptr)
        *fetch.row = child;
    return 0;
}

int32_t PlainWalk::invoke_action(const Fetch &fetch, const std::string &uri) {
    const DocNode &ch = *fetch.ch;
    std::string in;
    for (const auto &[name, given] : ch.act_in) {
        FakeValue value = given;
        if (const auto *text = std::get_if<std::string>(&given))
            value = resolve(*text, fetch.parent).value_or(given);
        in += (in.empty() ? "" : ",") + name + "=" + show(value);
    }
    PlainNode *child = add(*fetch.parent, ch.name);
    calls_.push_back("action " + uri + " " + ch.act_name + " (" + in + ")");
    const int32_t rc = outcome("action " + uri);
    if (rc != 0) {
        take_error(*child);
        return rc;
    }
    child->uri = uri;
    PlainNode *answer = add(*child, ch.act_name);
    for (const auto &[name, value] : tables_.answer)
        answer->set(name, value);
    return 0;
}

bool PlainWalk::takes_where(const DocNode &ch) {
    if (!ch.where_once)
        return true;
    if (std::find(where_used_.begin(), where_used_.end(), &ch) != where_used_.end())
        return false;
    if (where_used_.size() < where_room_)
        where_used_.push_back(&ch);
    return true;
}

void PlainWalk::mark_where_used(const DocNode &ch) {
    for (const DocNode &child : ch.children) {
        if (!ch.where.empty() && ch.where_once)
            takes_where(ch);
        mark_where_used(child);
    }
}

// 1, 2 and 15 of a fetch of rows.
int32_t PlainWalk::fetch_rows(const Fetch &fetch) {
    const DocNode &ch = *fetch.ch;
    const auto selection = selection_of(ch, *fetch.parent);
    const bool oper_mr = ch.meta == DocNode::Meta::oper;
    Names cfg;
    std::optional<Names> oper;
    if (oper_mr) {
        oper = joined(kIds, ch.oper);
    } else {
        cfg = joined(kIds, selected(ch.cfg, selection));
        if (!ch.oper.empty())
            oper = selected(ch.oper, selection);
    }
    const int32_t rc = fetch_batch(fetch, cfg, oper, oper_mr);
    auto &all = fetch.parent->children;
    if (ch.return_mode == 2) {
        if (all.size() >= 2) {
            for (PlainNode *node : all)
                node->hidden = true;
            all.back()->hidden = false;
            *fetch.row = all.back();
        }
        if (fetch.ctx->cursor != nullptr)
            retry_ = true;
    }
    if (fetch.ctx->cursor != nullptr)
        fetch.ctx->state = 1;
    return rc;
}

// 4 to 7.
int32_t PlainWalk::open(const Fetch &fetch, const Names &cfg, const std::optional<Names> &oper,
                        bool oper_mr, std::optional<NamedValues> &where) {
    const DocNode &ch = *fetch.ch;
    if (!ch.where.empty() && takes_where(ch))
        where = resolved(ch.where, *fetch.parent);
    const auto order = order_of(ch);
    std::string uri = fetch.uri;
    // A plain collection of a known type is read by that type.
    const size_t query = uri.find('?');
    if (ch.meta == DocNode::Meta::config && query != std::string::npos &&
        uri.find(':', query) == std::string::npos)
        uri = uri.substr(0, query) + (query >= 3 ? "/" : "") + uri.substr(query + 1) + "?:net/M";
    const std::string kind = oper_mr             ? "open_oper "
                             : ch.return_default ? "open_cfg "
                                                 : "open_cfg_no_defaults ";
    const Names &names = oper_mr ? *oper : cfg;
    calls_.push_back(kind + uri + " " + list_text(names) +
                     (where ? " where=" + list_text(*where) : "") +
                     (order ? " order=" + list_text(*order) : ""));
    if (const int32_t rc = outcome("open " + uri); rc != 0)
        return rc;
    fetch.ctx->cursor = std::make_unique<Cursor>(Cursor{names, tables_.rows[uri]});
    fetch.ctx->batches = 0;
    return 0;
}

// 3 to 14.
int32_t PlainWalk::fetch_batch(const Fetch &fetch, const Names &cfg,
                               const std::optional<Names> &oper, bool oper_mr) {
    const DocNode &ch = *fetch.ch;
    Ctx &ctx = *fetch.ctx;
    std::optional<NamedValues> where;
    if (ctx.cursor != nullptr) {
        fetch.parent->children.clear();
    } else if (const int32_t rc = open(fetch, cfg, oper, oper_mr, where); rc != 0) {
        return rc;
    }
    std::vector<Values> rows;
    int32_t rc = cursor_next(*ctx.cursor, fetch.count, rows);
    int32_t result = 0;
    if (fetch.count == 0 && !oper_mr)
        rc = 1;
    if (rc > 1) {
        if (error_)
            take_error(*add(*fetch.parent, ch.name));
        result = rc;
    } else {
        ++ctx.batches;
        if (rows.empty())
            rc = 1;
        for (const Values &row : rows)
            result = take_row(fetch, row, cfg, oper, oper_mr, where);
        if (rows.empty() && where && ch.where_once)
            mark_where_used(ch);
    }
    if (rc != 0)
        close(ctx);
    return result;
}

// 11.
int32_t PlainWalk::take_row(const Fetch &fetch, const Values &row, const Names &cfg,
                            const std::optional<Names> &oper, bool oper_mr,
                            const std::optional<NamedValues> &where) {
    const DocNode &ch = *fetch.ch;
    const auto *uri = row.empty() ? nullptr : std::get_if<UriText>(&row[0]);
    if (uri == nullptr) {
        add(*fetch.parent, ch.name)->error = {101, "unexpected do type"};
        return 101;
    }
    const Names names = joined(cfg, oper.value_or(Names()));
    for (const auto &[name, value] : where &&ch.where_once ? *where : NamedValues()) {
        const size_t blank = name.find(' ');
        if (blank == std::string::npos || name.compare(blank + 1, 2, ">=") != 0)
            continue;
        const std::string wanted = name.substr(0, name.size() - (name.size() - blank - 1) + 1);
        for (size_t i = 0; i < names.size() && i < row.size(); ++i) {
            if (names[i] != wanted)
                continue;
            if (show(row[i]) != show(value))
                mark_where_used(ch);
            break;
        }
    }
    if (!ch.act_name.empty())
        return invoke_action(fetch, uri->text);
    PlainNode *child = add(*fetch.parent, ch.name);
    if (*fetch.row == nullptr)
        *fetch.row = child;
    Values values;
    add_values(values, row, oper_mr ? oper->size() : cfg.size());
    int32_t result = 0;
    if (oper && !oper_mr) {
        Values read_values;
        const int32_t rc = read(true, uri->text, *oper, true, read_values);
        if (rc == 0 || rc == 102) {
            add_values(values, read_values, oper->size());
        } else {
            take_error(*child);
            result = rc;
        }
    }
    fill(fetch, *child, uri->text, names, values, true);
    return result;
}

}  // namespace oru::test
