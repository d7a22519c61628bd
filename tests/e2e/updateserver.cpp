// The update service of an end-to-end test: a server of HTTP on this machine.
//
//   updateserver ADDRESS PORT REPLY
//
// Answers each request with the contents that the file REPLY has then; an empty one means that nothing comes, and no
// end. Writes "ready", and then the target of each request, a line each. Ends when it is killed.

#include "update/LoopbackServer.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace {

void say(const QByteArray &line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("updateserver ADDRESS PORT REPLY\n", stderr);
        return 2;
    }
    LoopbackServer server{QHostAddress(arguments.at(1)), arguments.at(2).toUShort()};
    if (!server.isListening()) {
        std::fputs(qPrintable(server.errorString() + QLatin1Char('\n')), stderr);
        return 1;
    }
    server.answer = [&server, path = arguments.at(3)](const QByteArray &request) {
        say(LoopbackServer::target(request));
        QFile file(path);
        const QByteArray body = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        server.keepsOpen = body.isEmpty();
        return body.isEmpty() ? QByteArray() : LoopbackServer::ok(body);
    };
    say("ready");
    return QCoreApplication::exec();
}
