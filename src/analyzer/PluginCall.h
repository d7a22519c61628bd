#pragma once

#include <QString>

#include <exception>

/// Runs `call`, code of a plug-in, and lets nothing out of it. @return empty, or what it threw, for the user
template<class Call>
[[nodiscard]] QString pluginFault(const Call &call)
{
    try {
        call();
        return {};
    } catch (const std::exception &thrown) {
        const QString what = QString::fromUtf8(thrown.what());
        return what.isEmpty() ? QStringLiteral("an exception") : what;
    } catch (...) {
        return QStringLiteral("an exception");
    }
}
