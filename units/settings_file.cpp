// The settings file check for hosts: the registry file's state in the host's string type.
#include "qv5/settings.h"

#include "platform/files.h"
#include "platform/settings_store.h"

namespace qv5 {

int CheckSettingsFile(CString& file, CString& reason) {
    try {
        const std::string path = detail::registry_file_path();
        const detail::RegistryFileCheck check = detail::check_registry_file(path);
        file = CString(check.path.c_str());
        reason = CString(check.reason.c_str());
        return check.problem == detail::RegistryFileProblem::none ? 1 : 0;
    } catch (...) {
        // Out of memory: nothing could be examined, so nothing is known to be wrong.
        file.Empty();
        reason.Empty();
        return 1;
    }
}

} // namespace qv5
