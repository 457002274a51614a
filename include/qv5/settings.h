/// @file settings.h
/// The file in which the unit choices of `CQuantityUnits` persist, checked for a host that
/// wants to tell its user when they cannot be read or saved. The library itself never reports
/// it: a damaged file reads as empty (the defaults stay in force) and is never written over.
#ifndef QV5_SETTINGS_H
#define QV5_SETTINGS_H

#include "qv5/export.h"
#include "qv5/hostfw.h"

namespace qv5 {

/// Looks at the settings file that `CQuantityUnits` would use now (`QV5_REGISTRY`, else
/// `${XDG_CONFIG_HOME:-$HOME/.config}/qv5/registry.reg`), changing nothing.
/// @param[out] file the file's path; empty when no location can be found
/// @param[out] reason what is wrong, one English sentence fragment to follow the file's name
///             ("is read-only; ..."); emptied when nothing is
/// @return 1 when the file is missing (a fresh store) or can be read and written as it is; 0
///         when it is there but is not read (not a regular file, unreadable, larger than
///         16 MiB, not a registry file) or cannot be written (read-only)
QV5_API int CheckSettingsFile(CString& file, CString& reason);

} // namespace qv5

#endif // QV5_SETTINGS_H
