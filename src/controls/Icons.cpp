#include "controls/Icons.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QPointer>

namespace {

/// Ends with the application: an icon must not outlive it.
class IconTable : public QObject {
public:
    using QObject::QObject;
    QHash<QString, QIcon> icons;
};

/// The resource's name that tells its kind: without it Qt compares the file with all kinds that the system knows, which
/// takes ten times as long as to read it.
QString withKind(const QString &path)
{
    for (const char *kind : {".svg", ".png"}) {
        QString named = path + QLatin1String(kind);
        if (QFile::exists(named)) {
            return named;
        }
    }
    return path;
}

} // namespace

QIcon sharedIcon(const QString &path)
{
    static QPointer<IconTable> table;
    if (!table) {
        table = new IconTable(QCoreApplication::instance());
    }
    auto found = table->icons.find(path);
    if (found == table->icons.end()) {
        found = table->icons.insert(path, QIcon(withKind(path)));
    }
    return found.value();
}
