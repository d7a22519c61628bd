#pragma once

#include <QUrl>

/// How long a check lasts, milliseconds.
struct UpdatePace {
    int startDelay = 5000; ///< from the program's start to the check that it makes by itself
    int askDelay = 500;    ///< from the user's wish to the request
    int limit = 15'000;    ///< of a check, from its request to the last byte, redirections included
};

/// Where a build asks for newer versions. Chosen when the program is built (LUX_UPDATE_URL, LUX_UPDATE_AT_START) and by
/// nothing else: neither a setting nor a variable leads a running program to another place.
struct UpdateSource {
    QUrl endpoint;       ///< "/update" is added to its path; empty: this build asks nobody
    bool atStart = true; ///< false: it asks only when the user wants it
    UpdatePace pace;     ///< a test takes a shorter one
};
