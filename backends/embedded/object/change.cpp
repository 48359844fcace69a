#include "change.h"

#include "checks.h"

namespace embedded {

namespace {

using Status = CommitResult::Status;

constexpr int kTries = 10;

/* What the store answered, and with `done` the result. */
struct Attempt {
    Status status = Status::done;
    ChangeResult result;
};

ChangeResult refusal(const Edit &edit) {
    return {edit.faults().code(), 0, edit.faults().to_error()};
}

Attempt try_once(const Source &source, const SecretWriter &secrets, const ChangeRequest &request) {
    Edit edit(source, source.store->head(), request.authority);
    EachOperation each(request.operations);
    while (ORUDoConfigOp *operation = each()) {
        if (oru_do_config_op_is_noop(operation) == 0)
            edit.apply(operation);
    }
    check(edit);
    if (!edit.faults().empty())
        return {Status::done, refusal(edit)};

    EditWrites writes(edit, secrets);
    writes.prepare();
    if (!edit.faults().empty())
        return {Status::done, refusal(edit)};
    if (request.is_dry_run || writes.empty())
        return {};
    Commit commit = preconditions_of(edit.drafts());
    commit.who = request.who;
    commit.request = request.request;
    const CommitResult result = source.store->commit(commit, writes);
    return {result.status, {ORU_OK, result.revision, {}}};
}

ChangeResult failure(int32_t code, const char *words) {
    return {code, 0, made<Error>(oru_do_error_new(code, words))};
}

}  // namespace

/* A change that bears the name of one that is kept is that one: what it finds in the store now is
   its own work, which is not to be checked against. */
ChangeResult carry_out(const Source &source, const SecretWriter &secrets,
                       const ChangeRequest &request) {
    Attempt attempt;
    for (int i = 0; i < kTries; i++) {
        const Revision earlier =
            request.is_dry_run ? 0 : source.store->find_commit(request.request);
        if (earlier != 0)
            return {ORU_OK, earlier, {}};
        attempt = try_once(source, secrets, request);
        if (attempt.status == Status::done)
            return std::move(attempt.result);
        if (attempt.status == Status::unknown && request.request.empty())
            break;
    }
    if (attempt.status == Status::unknown)
        return failure(ORU_RC_DATABASE, "nobody knows whether the change was written");
    return failure(ORU_RC_RESOURCE_LOCKED, "the store changed again and again under the checks");
}

void make_root(const Source &source) {
    class Label final : public RowSink {
      public:
        void row(const Row &row) override { text = row.label; }
        void attribute(const Attribute &) override {}
        std::string text;
    } found;
    const Place root = Place::root();
    const std::string label = source.addresses.label_of(root);
    if (source.store->read(root.key, nullptr, kNewest, found) != ReadStatus::missing) {
        if (found.text != label)
            throw StoreFault(StoreFault::Kind::foreign,
                             "the database is that of another location: " + found.text);
        return;
    }
    // a conflict is one with who made it at the same time
    source.store->commit(
        {}, WriteList{{Write::Kind::create, root.key, label, source.model->root().name}});
}

}  // namespace embedded
