// What was read from a database, in the forms in which it is printed.
#ifndef ORU_TOOLS_ORUCTL_OUTPUT_H
#define ORU_TOOLS_ORUCTL_OUTPUT_H

#include <string>
#include <vector>

#include "handles.h"

namespace CLI {
class App;
}

namespace oructl {

enum class DataForm { table, tree, text, json, compact, xml };

struct DatabaseOptions;

// Adds what commands that print resources have: the database, --format and --show-secrets; `form`
// has the default.
void add_reading_options(CLI::App *command, DatabaseOptions &options, DataForm &form);

// A table for people: as wide as its cells, with a bold head on a terminal. A null cell is "-".
class TextTable {
  public:
    explicit TextTable(std::vector<std::string> head);

    void add(std::vector<std::string> cells);
    bool empty() const { return rows_.empty(); }
    std::string draw() const;

  private:
    std::vector<std::string> head_;
    std::vector<std::vector<std::string>> rows_;
};

// A resource as its attributes, which include "_uri" unless only others were asked for.
std::string resource_text(ORUDoProperties *props, DataForm form);

// Resources with the same attributes. A table has a column for each of `names`.
std::string resources_text(const std::vector<Properties> &rows,
                           const std::vector<std::string> &names, DataForm form);

// What the library's JSON writers do not break: addresses and labels, which they write as they
// stand, with the escapes of a text.
Uri json_safe(ORUDoUri *uri);
Properties json_safe(ORUDoProperties *props);

// Properties in JSON, with addresses and labels escaped as texts are.
std::string properties_json(ORUDoProperties *props, uint32_t options);

// A tree of results: what hangs from `tree`. Throws `Failure` when no such form comes of it.
std::string tree_text(ORUDoDtree *tree, DataForm form);

}  // namespace oructl

#endif
