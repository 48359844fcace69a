#include "commit.h"

#include "reader.h"

namespace behaviour {
namespace {

struct Mode {
    uint32_t flags = 0;
    std::string name; /* of the change; empty for none */
};

Mode read_mode(const Line &request) {
    Reader reader(request.text);
    reader.word();
    Mode mode;
    while (!reader.at_end()) {
        if (reader.takes("as system"))
            mode.flags |= ORU_EMBEDDED_SYSTEM;
        else if (reader.takes("dry"))
            mode.flags |= ORU_EMBEDDED_DRY_RUN;
        else if (reader.takes("named"))
            mode.name = reader.word();
        else
            throw ScriptFault("a commit is no \"" + reader.word() + "\"");
    }
    return mode;
}

/* ---- Operations ---- */

Properties read_properties(Reader &reader) {
    Properties props = made<Properties>(oru_do_properties_new());
    while (!reader.at_end()) {
        const std::string name = reader.name();
        const Value value = reader.value();
        oru_do_properties_set_value(props.get(), name.c_str(), value.get());
    }
    return props;
}

Name name_of(const std::string &text) {
    return text.empty() ? Name() : made<Name>(oru_do_name_new(text.c_str()));
}

struct Operation {
    int32_t code = 0;
    std::string address;
    std::string reference;
    std::string type;
    Properties props;
};

// The last segment of the address of a creation is the reference.
Operation read_creation(Reader &reader) {
    Operation operation;
    operation.code = ORU_EMBEDDED_OP_CREATE;
    const std::string collection = reader.word();
    const size_t slash = collection.rfind('/');
    operation.address = slash == 0 ? "/" : collection.substr(0, slash);
    operation.reference = collection.substr(slash + 1);
    if (reader.takes("as"))
        operation.type = reader.word();
    operation.props = read_properties(reader);
    return operation;
}

Operation read_operation(Reader &reader) {
    const std::string verb = reader.word();
    if (verb == "create")
        return read_creation(reader);
    Operation operation;
    if (verb == "operation")
        operation.code = std::atoi(reader.word().c_str());
    else if (verb == "set" || verb == "delete")
        operation.code = verb == "set" ? ORU_EMBEDDED_OP_SET : ORU_EMBEDDED_OP_DELETE;
    else
        throw ScriptFault("there is no operation \"" + verb + "\"");
    operation.address = reader.word();
    if (verb == "set")
        operation.props = read_properties(reader);
    return operation;
}

void add(const Operation &operation, bool is_noop, ORUDoConfigOps *operations) {
    const Uri uri = made<Uri>(oru_do_uri_new(full_address(operation.address).c_str()));
    const Name reference = name_of(operation.reference);
    const Name type = name_of(operation.type);
    if (oru_do_config_ops_add(operations, operation.code, uri.get(), operation.props.get(),
                              reference.get(), type.get(), nullptr) == 0)
        throw std::bad_alloc();
    if (is_noop)
        oru_do_config_op_set_noop(oru_do_config_ops_get_last_op(operations), 1);
}

std::string with_number(std::string text, int number) {
    for (size_t at = 0; (at = text.find('#', at)) != std::string::npos;)
        text.replace(at, 1, std::to_string(number));
    return text;
}

// "[noop] OPERATION", or "N times OPERATION", in which # stands for 1 to N.
void add_line(const std::string &text, ORUDoConfigOps *operations) {
    const size_t times = text.find(" times ");
    const int count = times != std::string::npos ? std::atoi(text.c_str()) : 0;
    for (int number = 1; number <= count; number++)
        add_line(with_number(text.substr(times + 7), number), operations);
    if (count > 0)
        return;
    Reader reader(text);
    const bool is_noop = reader.takes("noop");
    add(read_operation(reader), is_noop, operations);
}

Operations read_operations(const std::vector<Line> &lines) {
    Operations operations = made<Operations>(oru_do_config_ops_new());
    for (const Line &line : lines)
        at_line(line, [&] { add_line(line.text, operations.get()); });
    return operations;
}

}  // namespace

/* Whatever the answer is, what is not written is compared with what was there before. */
Lines Committer::carry_out(const Step &step) {
    const Mode mode = read_mode(step.request);
    const Operations operations = read_operations(step.details);
    const Lines before = back_end_.snapshot();

    ORUEmbeddedSession *const session = back_end_.session(false);
    ORUDoError *error = nullptr;
    int64_t revision = -1;
    const int32_t code =
        session->commit(session, operations.get(), mode.flags,
                        mode.name.empty() ? nullptr : mode.name.c_str(), &revision, &error);
    const Error held(error);

    const bool is_new = revision > revision_;
    Lines lines;
    if (code == ORU_OK)
        lines = {revision == 0 ? "done, nothing written" : is_new ? "done" : "done before"};
    else if (error == nullptr)
        lines = {text_of_code(code)};
    else
        lines = text_of_error(error);
    if (code != ORU_OK && error != nullptr && oru_do_error_get_code(error) != code)
        lines.push_back("the result is " + std::to_string(code));
    if (code != ORU_OK && revision != 0)
        lines.push_back("the revision is " + std::to_string(revision));
    if ((code != ORU_OK || !is_new) && back_end_.snapshot() != before)
        lines.emplace_back("something was written");
    if (code == ORU_OK && is_new)
        revision_ = revision;
    return lines;
}

}  // namespace behaviour
