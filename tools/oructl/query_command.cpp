// `oructl query`: answers a document of the data tree language from a database.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>

#include "addresses.h"
#include "change_faults.h"
#include "command.h"
#include "database.h"
#include "dtl_check.h"
#include "dtl_params.h"
#include "fault_words.h"
#include "model_words.h"
#include "output.h"
#include "query_params.h"
#include "terminal_text.h"

namespace oructl {
namespace {

using Document = std::unique_ptr<ORUDtlNode, Release<oru_dtl_tree_delete>>;
using Walk = std::unique_ptr<ORUDtlCtx, Release<oru_dtl_ctx_delete>>;

struct Arguments {
    DatabaseOptions database;
    std::string document = kStandardInput;
    std::vector<std::string> params;
    int32_t count = 0;  // leaf rows of a call; 0 for all
    bool all = false;
    DataForm form = DataForm::tree;
};

// Without a value a variable stays as its own text, which is seldom what was meant.
void print_missing_params(const xmlNode *root, ORUDoNvlist *params) {
    const std::vector<std::string> asked = params_of(root);
    for (const std::string &name : asked) {
        if (oru_do_nvlist_get_value(params, name.c_str()) == nullptr)
            tell("the document asks for $" + name + ": -p " + name + "=VALUE");
    }
    for (EachItem each(params); ORUDoNvlistItem *item = each();) {
        const std::string name = oru_do_nvlist_item_get_name(item);
        if (std::ranges::find(asked, name) == asked.end())
            tell("the document does not ask for $" + name + similar_question(name, asked));
    }
}

// Addresses that come from the user. The library ends the process at some, so that only what was
// looked at may be one.
void check_addresses(const DtlDocument &document, const xmlNode *element, ORUDoNvlist *params) {
    std::string address;
    read_attribute(element, "uri", address);
    if (address.starts_with('$')) {
        ORUDoValue *const value = oru_do_nvlist_get_value(params, address.c_str() + 1);
        int32_t status = ORU_OK;
        const char *text = value != nullptr ? oru_do_value_get_string(value, &status) : nullptr;
        if (text == nullptr)
            throw Failure("the parameter " + address.substr(1) + " is an address: -p " +
                          address.substr(1) + "=/...");
        check_collection(text);
        if (const std::string fault = query_mark_fault(text); !fault.empty())
            throw Failure("the parameter " + address.substr(1) + ": " + fault);
    } else if (!address.starts_with('@') && document.address_fault(element).empty()) {
        check_limits(address);
    }
    for (const xmlNode *child = element_from(element->children); child != nullptr;
         child = element_from(child->next))
        check_addresses(document, child, params);
}

bool has_default(const ORUDtlNode &row, const std::string &name) {
    for (const ORUDtlNode *child = row.first_child; child != nullptr; child = child->next) {
        if (child->default_expr != nullptr && text_of(child->name) == name)
            return true;
    }
    return false;
}

// An attribute of the row above whose values are addresses: the back end keeps those only that can
// be followed. A default could be anything.
bool leads_on(const ORUDtlNode &above, const std::string &name) {
    ORUDoMrMeta *const meta = above.mr_info != nullptr ? above.mr_info->mr_meta : nullptr;
    ORUDoPropMeta *const attribute =
        meta != nullptr ? oru_do_mr_meta_get_prop_meta_str(meta, name.c_str()) : nullptr;
    return attribute != nullptr && oru_do_prop_meta_get_category(attribute) != ORU_PROP_REF &&
           oru_do_prop_meta_get_typecode(attribute) == ORU_DO_TYPE_MR_URI &&
           !has_default(above, name);
}

void check_data_addresses(const ORUDtlNode &above) {
    for (const ORUDtlNode *child = above.first_child; child != nullptr; child = child->next) {
        ORUDoUri *const uri = child->mr_info != nullptr ? child->mr_info->uri : nullptr;
        const std::string address = uri != nullptr ? oru_do_uri_get_uri_str(uri) : "";
        if (address.starts_with('@') && !leads_on(above, address.substr(1)))
            throw Failure(address +
                          " is no address: one from the data is an attribute of the "
                          "element above, of the type mrURI and without a default");
        check_data_addresses(*child);
    }
}

Document read_document(const DtlDocument &source) {
    ORUDoError *error = nullptr;
    const MetadataLock lock;
    Document document(oru_dtl_from_str(source.safe_text().c_str(), &error));
    oru_do_error_deref(error);
    return document;
}

// What the check of the document has to say, each with its place.
void print_faults(const DtlItem &item, std::set<std::string> &told) {
    print(stderr, item.faults);
    for (const Fault &fault : item.faults)
        told.insert(fault.words);
    for (const DtlItem &child : item.children)
        print_faults(child, told);
}

std::set<std::string> print_faults(const CheckedDtl &checked) {
    std::set<std::string> told;
    print(stderr, checked.faults);
    for (const Fault &fault : checked.faults)
        told.insert(fault.words);
    for (const DtlItem &root : checked.roots)
        print_faults(root, told);
    return told;
}

// A call answers 0 as long as more may follow; the last one may bring rows too. Rows of earlier
// calls go when the walk comes back to their place, and after its end when we let them go.
class Query {
  public:
    Query(const Database &database, const Arguments &arguments, ORUDtlNode *document,
          std::set<std::string> told)
        : database_(database),
          arguments_(arguments),
          told_(std::move(told)),
          has_errors_(!told_.empty()),
          walk_(made<Walk>(oru_dtl_ctx_new(document, database.data(), database.coll()))) {}

    int run(ORUDoNvlist *params) {
        int32_t code = ORU_OK;
        do
            code = call(params);
        while (code == ORU_OK && (arguments_.all || arguments_.count == 0));
        std::fflush(stdout);
        if (code == ORU_OK)
            tell("there may be more rows: --all prints them");
        if (code > ORU_RC_NO_MORE_VALUE && !has_errors_)
            tell(words_of_failure(holder(), code));
        return code > ORU_RC_NO_MORE_VALUE || has_errors_ ? kFaults : kDone;
    }

  private:
    int32_t call(ORUDoNvlist *params) {
        const int32_t code =
            oru_dtl_get_next(database_.data(), walk_.get(), params, arguments_.count);
        if (oru_do_dtree_get_unhidden_child_count(walk_->dtree_node) == 0)
            return code;
        std::fputs(tree_text(walk_->dtree_node, arguments_.form).c_str(), stdout);
        std::fflush(stdout);
        print_errors(walk_->dtree_node);
        if (walk_->state == ORU_DTL_STATE_FINISHED)
            oru_do_dtree_remove_children(walk_->dtree_node);
        return code;
    }

    ORUErrorIfc *holder() const { return database_.data()->get_error_ifc(database_.data()); }

    // What the document has wrong was told with its place.
    void print_errors(ORUDoDtree *node) {
        if (ORUDoError *error = oru_do_dtree_get_error(node)) {
            const std::string line = error_line(error);
            if (told_.count(line.substr(0, line.rfind(" ("))) == 0)
                tell(line);
            has_errors_ = true;
        }
        for (EachChild each(node); ORUDoDtree *child = each();)
            print_errors(child);
    }

    const Database &database_;
    const Arguments &arguments_;
    std::set<std::string> told_;
    bool has_errors_;
    Walk walk_;
};

int run(const Arguments &arguments) {
    const Database database(arguments.database, Missing::fault);
    const DtlDocument source(SourceText::read(arguments.document));
    std::set<std::string> told = print_faults(check_dtl(source, database.model()));
    if (source.root() == nullptr)
        return kFaults;
    const NameValueList params = read_params(arguments.params);
    check_addresses(source, source.root(), params.get());
    print_missing_params(source.root(), params.get());
    const Document document = read_document(source);
    if (document == nullptr)
        return kFaults;
    check_data_addresses(*document);
    return Query(database, arguments, document.get(), std::move(told))
        .run(with_times(params.get(), *document).get());
}

}  // namespace

void add_query_command(CLI::App &app, int &status) {
    const auto arguments = std::make_shared<Arguments>();
    auto *command = app.add_subcommand("query", "Answers a document of the data tree language");
    command->add_option("document", arguments->document, "file; - or none is standard input")
        ->check(input_file());
    command
        ->add_option("-p,--param", arguments->params,
                     "NAME=VALUE, a parameter of the document: JSON, or else a text")
        ->take_all()
        ->allow_extra_args(false);
    command->add_option("--count", arguments->count, "leaf rows to read; by default all")
        ->check(number_within(1, INT32_MAX));
    command->add_flag("--all", arguments->all, "read on by as many rows until there are no more");
    add_reading_options(command, arguments->database, arguments->form);
    command->callback([arguments, &status] { status = run(*arguments); });
}

}  // namespace oructl
