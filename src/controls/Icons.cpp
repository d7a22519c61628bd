#include "controls/Icons.h"

#include <QCoreApplication>
#include <QHash>
#include <QPointer>

namespace {

/// Ends with the application: an icon must not outlive it.
class IconTable : public QObject {
public:
    using QObject::QObject;
    QHash<QString, QIcon> icons;
};

} // namespace

QIcon sharedIcon(const QString &path)
{
    static QPointer<IconTable> table;
    if (!table) {
        table = new IconTable(QCoreApplication::instance());
    }
    auto found = table->icons.find(path);
    if (found == table->icons.end()) {
        found = table->icons.insert(path, QIcon(path));
    }
    return found.value();
}
