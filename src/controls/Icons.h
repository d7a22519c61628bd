#pragma once

#include <QIcon>
#include <QString>

/// The icon of a resource such as ":/res/btnMenu", read once for all who show it.
///
/// The icons are drawings, which cost a millisecond to read and to render: copies of one icon render each size once.
/// Main thread, while the application lives. Cost: a look into a table after the first call.
[[nodiscard]] QIcon sharedIcon(const QString &path);
