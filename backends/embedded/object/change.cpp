#include "change.h"

#include "checks.h"

namespace embedded {

namespace {

using Status = CommitResult::Status;

constexpr int kTries = 10;

/* Nothing, when the store changed meanwhile or does not know whether it did. */
std::optional<ChangeResult> try_once(const Source &source, const SecretWriter &secrets,
                                     const ChangeRequest &request) {
    Edit edit(source, source.store->head(), request.authority);
    EachOperation each(request.operations);
    while (ORUDoConfigOp *operation = each()) {
        if (oru_do_config_op_is_noop(operation) == 0)
            edit.apply(operation);
    }
    check(edit);
    if (!edit.faults().empty())
        return ChangeResult{edit.faults().code(), 0, edit.faults().to_error()};

    Texts texts;
    std::deque<Value> values;
    Commit commit = commit_of(edit, secrets, texts, values);
    if (request.is_dry_run || commit.writes.empty())
        return ChangeResult{};
    commit.who = request.who;
    commit.request = request.request;
    const CommitResult result = source.store->commit(commit);
    if (result.status != Status::done)
        return std::nullopt;
    return ChangeResult{ORU_OK, result.revision, {}};
}

}  // namespace

ChangeResult carry_out(const Source &source, const SecretWriter &secrets,
                       const ChangeRequest &request) {
    for (int i = 0; i < kTries; i++) {
        if (std::optional<ChangeResult> result = try_once(source, secrets, request))
            return std::move(*result);
    }
    ChangeResult result;
    result.code = ORU_RC_RESOURCE_LOCKED;
    result.error = made<Error>(
        oru_do_error_new(result.code, "the store changed again and again under the checks"));
    return result;
}

void make_root(const Source &source) {
    class Nothing final : public RowSink {
        void row(const Row &) override {}
        void attribute(const Attribute &) override {}
    } nothing;
    const Place root = Place::root();
    if (source.store->read(root.key, nullptr, kNewest, nothing) != ReadStatus::missing)
        return;
    Commit commit;
    commit.writes.push_back({Write::Kind::create,
                             root.key,
                             source.addresses.label_of(root),
                             source.model->root().name,
                             {}});
    source.store->commit(commit);  // a conflict is one with who made it at the same time
}

}  // namespace embedded
