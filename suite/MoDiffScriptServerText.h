#ifndef MO_DIFF_SCRIPT_SERVER_TEXT_H
#define MO_DIFF_SCRIPT_SERVER_TEXT_H

/// The program tools/modifftools/server.py, made part of this one by the build.
extern char const kMoDiffScriptServerText[];

#endif
