#ifndef KLT_EXPORT_H
#define KLT_EXPORT_H

/// Marks a class or function as part of the library's interface; everything else has hidden visibility.
#define KLT_EXPORT __attribute__((visibility("default")))
/// What a class that is exported keeps to the library.
#define KLT_LOCAL __attribute__((visibility("hidden")))

#endif
