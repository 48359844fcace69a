// What is wrong with a change, a line for each fault on standard error.
#ifndef ORU_TOOLS_ORUCTL_CHANGE_FAULTS_H
#define ORU_TOOLS_ORUCTL_CHANGE_FAULTS_H

#include <oru/oru.h>

#include <string>
#include <string_view>
#include <vector>

#include "database.h"
#include "faults.h"

namespace oructl {

// The option for all faults where there are many.
void add_faults_option(CLI::App *command, bool &all);

// Prints the first faults, and counts the others unless all are wanted.
class FaultLines {
  public:
    explicit FaultLines(bool all) : all_(all) {}

    void add(std::string_view line);
    // How many were left out.
    void end() const;

  private:
    bool all_;
    size_t count_ = 0;
};

void print_faults(const std::vector<Fault> &faults, bool all);

// Why a change was refused.
void print_refusal(const Database::Answer &answer, bool all);

// An error on one line: its words and its code.
std::string error_line(ORUDoError *error);

}  // namespace oructl

#endif
