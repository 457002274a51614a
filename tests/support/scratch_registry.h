// A registry file of the test's own: a scratch folder that the QV5_REGISTRY variable points into
// for the life of the object, so that nothing a test does reaches the user's registry file.
#ifndef QV5_TESTS_SUPPORT_SCRATCH_REGISTRY_H
#define QV5_TESTS_SUPPORT_SCRATCH_REGISTRY_H

#include "support/scratch.h"

#include <string>

namespace qv5::test {

/// QV5_REGISTRY names `name` in a fresh scratch folder until the object goes; the folder and
/// everything in it are removed then, and the variable is restored.
class ScratchRegistry {
public:
    explicit ScratchRegistry(const std::string& name = "registry.reg")
        : m_path(m_scratch.file(name)), m_variable("QV5_REGISTRY", m_path) {}

    ScratchRegistry(const ScratchRegistry&) = delete;
    ScratchRegistry& operator=(const ScratchRegistry&) = delete;

    /// The registry file's path (the file need not exist yet).
    const std::string& path() const { return m_path; }
    /// The scratch folder the file lives in, for anything else the test puts beside it.
    const ScratchFolder& folder() const { return m_scratch; }

private:
    ScratchFolder m_scratch;
    std::string m_path;
    ScopedEnvironment m_variable;
};

} // namespace qv5::test

#endif // QV5_TESTS_SUPPORT_SCRATCH_REGISTRY_H
