// Feeds arbitrary bytes, as the head of a data file, to everything that reads a settings block.

#include "controls/WindowPlace.h"
#include "settings/Config.h"

#include <QFile>
#include <QRect>
#include <QTemporaryDir>
#include <QVector>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

bool isShown(const QRect &window, const QRect &screen)
{
    return window.width() >= 1 && window.height() >= 1 && window.width() <= screen.width() &&
           window.height() <= screen.height();
}

void readLists()
{
    const QString model = QStringLiteral("RV2520");
    QVector<bool> flags(16, true);
    chnEnableGet(model, flags, false);
    require(flags.size() == 16, "the channels stay as many");
    QVector<int> kinds(16);
    chnTrigGet(model, kinds, false);
    for (const int kind : qAsConst(kinds)) {
        require(kind <= 4, "no trigger kind above 4");
    }
    chnTrigGet(model, kinds, true);
    qint64 rows = 0;
    const QVector<int> order = chnShowIndexGet(32);
    for (const int row : order) {
        rows |= qint64{1} << row;
    }
    require(rows == 0xFFFFFFFF, "the display order is a permutation");
    const QVector<int> factors = chnShowMultipGet(32);
    for (const int factor : factors) {
        require(factor == 1 || factor == 2 || factor == 4 || factor == 8, "the height factor is one of four");
    }
    require(AChnHorLabelPosGet(2).size() <= 2, "no more tags than asked for");
    require(!chnShowNameGet(0).isEmpty(), "each channel has a name");
}

void readWindow()
{
    const QRect screen(-1920, 40, 1920, 1040);
    require(isShown(windowPositionGet(screen), screen), "the window fits the screen");
}

/// What was read can be written, and what was written can be read and says the same.
void writeAndReadBack()
{
    static const QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("saved.cxset"));
    globalSet(QStringLiteral("lastPath"), QStringLiteral("/here"));
    require(configSave(path), "a temporary file can be written");
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "a saved file can be read");
    const QByteArray saved = file.readAll();
    require(configReplace(saved), "a saved file parses");
    // An element of mixed content keeps what stands behind its first text.
    require(globalGet(QStringLiteral("lastPath")).startsWith(QStringLiteral("/here")), "a value survives");
    require(saved.size() > 32'768 || configHeadSize(saved) > 0, "a saved file holds a settings block");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray head(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const int blockSize = configHeadSize(head);
    require(blockSize >= 0 && blockSize <= head.size() && blockSize <= 32'768, "the block lies in the head");

    require(configReplace(QByteArrayLiteral("<settings/>")), "the least document parses"); // forget the last input
    // Most inputs hold no end tag: let them reach the parser all the same.
    const bool replaced = configReplace(blockSize > 0 ? head.left(blockSize) : head);
    readLists();
    readWindow();
    if (replaced) {
        writeAndReadBack();
    }

    int numbers[8] = {};
    require(intListGet(QString::fromUtf8(head), numbers, 8) <= 8, "a list stays in its array");
    analyzersClear();
    require(analyzersAll().isEmpty(), "cleared analyzers are gone");
    analyzerPut(0, QString::fromUtf8(head), QString(), QString());
    return 0;
}
