#ifndef MO_DIFF_PAGE_ASSETS_H
#define MO_DIFF_PAGE_ASSETS_H

/// The files share/report/report.css and report.js, made part of this one by the build.
extern char const kMoDiffPageStyle[];
extern char const kMoDiffPageScript[];

#endif
