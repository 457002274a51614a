// Runs the built qv5 program as a surveyor would, with a settings store of its own: every test
// gets a fresh registry file (so the user's own unit choices never reach a test, and a fresh
// store shows the library's defaults: US survey feet, DMS bearings, percent grades).
#ifndef QV5_TESTS_CLI_QV5_PROGRAM_H
#define QV5_TESTS_CLI_QV5_PROGRAM_H

#include "run_program.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qv5::test {

/// The registry file the program uses in the running test.
inline std::string program_registry() {
    static const ScratchFolder scratch;
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    const std::string name =
        test != nullptr ? std::string(test->test_suite_name()) + "." + test->name() : "none";
    return scratch.file(name + ".reg");
}

/// Runs qv5 with `args`, its settings store in this process's scratch folder.
inline ProgramResult run_qv5(const std::vector<std::string>& args,
                             std::vector<std::string> environment = {}) {
    environment.insert(environment.begin(), "QV5_REGISTRY=" + program_registry());
    return run_program(QV5_CLI_PATH, args, environment);
}

} // namespace qv5::test

#endif
