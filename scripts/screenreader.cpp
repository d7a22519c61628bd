// What a screen reader sees of the one program that is started after `offer`, for scripts that drive it.
//
//   screenreader offer ADDRESS    tells the programs of $DISPLAY that the accessibility bus is the message bus ADDRESS
//   screenreader list ADDRESS     prints what is shown: one line an element, in the order of the program's tree
//
// A line holds, parted by tabs: x, y, width, height (pixels of the screen), role, name, description, state, and what
// stands in a field for text. The state is made of the words "disabled", "checked" and "focused". The program must also
// have ADDRESS in DBUS_SESSION_BUS_ADDRESS.

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QRect>
#include <QStringList>
#include <QTextStream>
#include <QVector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <cstdio>
#include <optional>

namespace {

// Numbers of the AT-SPI protocol.
constexpr int stateChecked = 4;
constexpr int stateEnabled = 8;
constexpr int stateFocused = 12;
constexpr int stateShowing = 25;
constexpr int screenCoordinates = 0;

const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString accessible = QStringLiteral("org.a11y.atspi.Accessible");

struct Reader {
    QDBusConnection bus;
    QString program; ///< its name on the bus
    QTextStream out{stdout};

    QVariantList ask(const QString &path, const QString &interface, const QString &method, const QVariantList &with)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(program, path, interface, method);
        call.setArguments(with);
        const QDBusMessage answer = bus.call(call, QDBus::Block, 5000);
        return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments() : QVariantList();
    }

    QString property(const QString &path, const QString &name)
    {
        const QVariantList answer =
            ask(path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"), {accessible, name});
        QString text = answer.isEmpty() ? QString() : answer[0].value<QDBusVariant>().variant().toString();
        return text.replace(QLatin1Char('\t'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    }

    QString content(const QString &path, const QString &role)
    {
        if (role != QLatin1String("text")) {
            return {};
        }
        return ask(path, QStringLiteral("org.a11y.atspi.Text"), QStringLiteral("GetText"), {0, -1}).value(0).toString();
    }

    /// @return nothing for an element that has gone meanwhile
    std::optional<quint64> states(const QString &path)
    {
        const QVariantList answer = ask(path, accessible, QStringLiteral("GetState"), {});
        if (answer.isEmpty()) {
            return std::nullopt;
        }
        QVector<uint> words;
        answer[0].value<QDBusArgument>() >> words;
        return words.value(0) | quint64(words.value(1)) << 32;
    }

    QRect place(const QString &path)
    {
        const QVariantList answer = ask(path, QStringLiteral("org.a11y.atspi.Component"), QStringLiteral("GetExtents"),
                                        {uint(screenCoordinates)});
        QRect rect;
        if (!answer.isEmpty()) {
            answer[0].value<QDBusArgument>() >> rect;
        }
        return rect;
    }

    QStringList children(const QString &path)
    {
        QStringList paths;
        const QVariantList answer = ask(path, accessible, QStringLiteral("GetChildren"), {});
        if (answer.isEmpty()) {
            return paths;
        }
        const auto list = answer[0].value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString owner;
            QDBusObjectPath child;
            list.beginStructure();
            list >> owner >> child;
            list.endStructure();
            paths.append(child.path());
        }
        list.endArray();
        return paths;
    }

    void print(const QString &path)
    {
        const std::optional<quint64> state = states(path);
        const auto has = [&state](int bit) { return ((*state >> bit) & 1) != 0; };
        if (path != rootPath && (!state || !has(stateShowing))) {
            return;
        }
        if (path != rootPath) {
            const QRect at = place(path);
            const QVariantList role = ask(path, accessible, QStringLiteral("GetRoleName"), {});
            const QStringList words = QStringList() << (has(stateEnabled) ? QString() : QStringLiteral("disabled"))
                                                    << (has(stateChecked) ? QStringLiteral("checked") : QString())
                                                    << (has(stateFocused) ? QStringLiteral("focused") : QString());
            out << at.x() << '\t' << at.y() << '\t' << at.width() << '\t' << at.height() << '\t'
                << role.value(0).toString() << '\t' << property(path, QStringLiteral("Name")) << '\t'
                << property(path, QStringLiteral("Description")) << '\t' << words.join(QLatin1Char(' ')).simplified()
                << '\t' << content(path, role.value(0).toString()) << '\n';
        }
        for (const QString &child : children(path)) {
            print(child);
        }
    }
};

int offer(const char *address)
{
    Display *display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fputs("screenreader: no display\n", stderr);
        return 1;
    }
    const QByteArray text(address);
    XChangeProperty(display, DefaultRootWindow(display), XInternAtom(display, "AT_SPI_BUS", False), XA_STRING, 8,
                    PropModeReplace, reinterpret_cast<const unsigned char *>(text.constData()), text.size());
    XCloseDisplay(display);
    return 0;
}

/// @return the name of the program's connection that answers as an accessible one; empty if there is none (yet)
QString accessibleProgram(const QDBusConnection &bus)
{
    const QStringList names = bus.interface()->registeredServiceNames();
    for (const QString &name : names) {
        Reader reader{bus, name};
        if (name.startsWith(QLatin1Char(':')) && name != bus.baseService() && !reader.children(rootPath).isEmpty()) {
            return name;
        }
    }
    return {};
}

int list(const QString &address)
{
    const QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("reader"));
    if (!bus.isConnected()) {
        std::fputs("screenreader: no bus\n", stderr);
        return 1;
    }
    const QString program = accessibleProgram(bus);
    if (program.isEmpty()) {
        return 1;
    }
    Reader{bus, program}.print(rootPath);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QByteArray what = argc == 3 ? argv[1] : "";
    if (what == "offer") {
        return offer(argv[2]);
    }
    if (what == "list") {
        return list(QString::fromLocal8Bit(argv[2]));
    }
    std::fputs("usage: screenreader offer|list ADDRESS\n", stderr);
    return 2;
}
