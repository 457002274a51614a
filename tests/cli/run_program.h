// Runs a program with arguments and captures its exit code, standard output and standard error.
#ifndef QV5_TESTS_CLI_RUN_PROGRAM_H
#define QV5_TESTS_CLI_RUN_PROGRAM_H

#include <string>
#include <vector>

namespace qv5::test {

struct ProgramResult {
    int exit_code = -1;
    std::string out;
    std::string err;
};

/// Runs `program` with `args` (no shell), with `environment` entries ("NAME=value") added and
/// `input` as its standard input (empty by default: the program reads end of file at once).
ProgramResult run_program(const std::string& program, const std::vector<std::string>& args,
                          const std::vector<std::string>& environment = {},
                          const std::string& input = {});

} // namespace qv5::test

#endif
