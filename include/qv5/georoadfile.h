/// @file georoadfile.h
/// The road file's header record and the detailed account of what a reader found wrong with a
/// file.
///
/// A road file is a 218-byte header (`qv5def_FileHeader`) followed by chained records. All
/// integers and doubles in the file are little-endian whatever the host; the structures below
/// are the header as the library holds it in memory, in the file's field order, packed, so that
/// their offsets are the file's offsets.
#ifndef QV5_GEOROADFILE_H
#define QV5_GEOROADFILE_H

#include <cstddef>

#pragma pack(push, 1)

/// One entry of the header's section directory (6 bytes).
struct qv5def_DirectoryEntry {
    unsigned short sectionType; ///< 1 horizontal, 2 vertical, 3 applications, 5 templates, 0 unused
    unsigned int firstRecord;   ///< byte offset of the section's first record header
};

/// The road file header (218 bytes at offset 0).
struct qv5def_FileHeader {
    char magic[11];                      ///< "Halvik QV5" with its terminating zero
    unsigned char reserved1[5];          ///< written as zero, ignored on reading
    int version;                         ///< 1
    int reserved2;                       ///< 0
    unsigned char reserved3[4];          ///< written as zero, ignored on reading
    unsigned short nameLength;           ///< 33: UTF-16 units in `name`
    unsigned short name[33];             ///< road name, zero-padded, at most 32 units
    unsigned short directorySize;        ///< 20: entries in `directory`
    qv5def_DirectoryEntry directory[20]; ///< sections in the order they were written
};

#pragma pack(pop)

static_assert(sizeof(qv5def_DirectoryEntry) == 6, "directory entry is 6 bytes");
static_assert(offsetof(qv5def_DirectoryEntry, firstRecord) == 2, "first record at 2");
static_assert(sizeof(qv5def_FileHeader) == 218, "file header is 218 bytes");
static_assert(offsetof(qv5def_FileHeader, reserved1) == 11, "reserved bytes at 11");
static_assert(offsetof(qv5def_FileHeader, version) == 16, "version at 16");
static_assert(offsetof(qv5def_FileHeader, reserved2) == 20, "reserved int at 20");
static_assert(offsetof(qv5def_FileHeader, reserved3) == 24, "reserved bytes at 24");
static_assert(offsetof(qv5def_FileHeader, nameLength) == 28, "name length at 28");
static_assert(offsetof(qv5def_FileHeader, name) == 30, "name at 30");
static_assert(offsetof(qv5def_FileHeader, directorySize) == 96, "directory size at 96");
static_assert(offsetof(qv5def_FileHeader, directory) == 98, "directory at 98");

/// What a road file reader found wrong (`georoad_FileReport::problem`).
enum georoad_FileProblem {
    georoad_FileOk = 0,               ///< nothing: the file was read
    georoad_FileCannotOpen = 1,       ///< missing, unreadable, not a regular file, or too large
    georoad_FileTruncatedHeader = 2,  ///< the file ends inside its header
    georoad_FileNotARoadFile = 3,     ///< the magic "Halvik QV5" is not at byte 0
    georoad_FileBadNameLength = 4,    ///< the name length exceeds the 33-unit name field
    georoad_FileBadDirectorySize = 5, ///< the directory size exceeds the 20-entry directory
    georoad_FileRecordOutside = 6,    ///< a record header starts or ends past the end of the file
    georoad_FileTruncatedRecord = 7,  ///< a record's data runs past the end of the file
    georoad_FileRecordTooShort = 8,   ///< a record's data is shorter than its type needs
    georoad_FileChainLoops = 9,       ///< a section's chain of next pointers comes back on itself
    georoad_FileElementRefused = 10,  ///< the road refused an element, PVI or template element
    georoad_FileUnknownTemplate = 11, ///< an application names no template read before it
    georoad_FileBadValue = 12,        ///< a field holds a value outside its range (a road side)
    georoad_FileTooMany = 13          ///< more templates or template elements than a road holds
};

/// Where and why a road file could not be read: the detailed result beside the specified
/// 1/0 and `georoad_Error`.
struct georoad_FileReport {
    georoad_FileProblem problem; ///< georoad_FileOk when the file was read
    unsigned long long offset;   ///< byte offset of the header field or record concerned
    unsigned int recordType;     ///< the record's type where one is concerned, else 0
    unsigned long long fileSize; ///< the file's length in bytes
};

#endif // QV5_GEOROADFILE_H
