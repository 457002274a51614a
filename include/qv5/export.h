/// @file export.h
/// Symbol visibility for QV5lib. The library is built with hidden visibility by default; every
/// name of the programming interface carries QV5_API.
#ifndef QV5_EXPORT_H
#define QV5_EXPORT_H

#if defined(_WIN32)
#if defined(QV5_BUILDING_LIBRARY)
#define QV5_API __declspec(dllexport)
#elif defined(QV5_STATIC)
#define QV5_API
#else
#define QV5_API __declspec(dllimport)
#endif
#else
#define QV5_API __attribute__((visibility("default")))
#endif

#endif // QV5_EXPORT_H
