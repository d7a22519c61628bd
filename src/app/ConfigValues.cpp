// The typed readers and writers of Config.h: lists, channel settings and the window's geometry. They see the document
// only through globalGet, deviceGet and their counterparts.

#include "app/Config.h"
#include "app/Globals.h"
#include "app/Language.h"

#include <QStringRef>

#include <algorithm>
#include <array>

namespace {

/// Hands each integer of a comma list to `store`, at most `capacity` times. Walks the text without copying it, so that
/// an absurdly long value costs one pass.
template<typename Store>
int readList(const QString &value, int capacity, Store store)
{
    int count = 0;
    int from = 0;
    while (from < value.size() && count < capacity) {
        const int comma = value.indexOf(QLatin1Char(','), from);
        const int end = comma < 0 ? value.size() : comma;
        if (end > from) {
            store(count, value.midRef(from, end - from).toInt());
            ++count;
        }
        from = end + 1;
    }
    return count;
}

template<typename Value>
QString writeList(const Value *array, int count)
{
    QString value;
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            value += QLatin1Char(',');
        }
        value += QString::number(static_cast<int>(array[i]));
    }
    return value;
}

QString enableKey(bool analog)
{
    return analog ? QStringLiteral("AChnEnable") : QStringLiteral("chnEnable");
}

QString trigKey(bool analog)
{
    return analog ? QStringLiteral("AChnTrig") : QStringLiteral("chnTrig");
}

bool isPermutation(const QVector<int> &order)
{
    QVector<bool> seen(order.size(), false);
    for (const int row : order) {
        if (row < 0 || row >= order.size() || seen.at(row)) {
            return false;
        }
        seen[row] = true;
    }
    return true;
}

void fillWithIndex(QVector<int> &order, int from)
{
    for (int i = from; i < order.size(); ++i) {
        order[i] = i;
    }
}

/// Whether enough of a stored window is in `available` to be seen and taken hold of. The sums are 64 bits wide, since
/// the stored numbers may be anything.
bool isReachable(const std::array<int, 4> &window, const QRect &available)
{
    const auto [x, y, width, height] = window;
    const qint64 left = available.x();
    const qint64 right = left + available.width();
    const qint64 top = available.y();
    const qint64 bottom = top + available.height();
    const qint64 visible = x < left ? qint64{x} + width - left : right - x;
    return visible >= dp(160) && y - top >= dp(20) && bottom - y >= dp(20) && width >= 1 &&
           width <= available.width() && height >= 1 && height <= available.height();
}

} // namespace

int intListGet(const QString &value, int *array, int capacity)
{
    return readList(value, capacity, [array](int i, int number) { array[i] = number; });
}

QString intListPut(const int *array, int count)
{
    return writeList(array, count);
}

int boolListGet(const QString &value, bool *array, int capacity)
{
    return readList(value, capacity, [array](int i, int number) { array[i] = number != 0; });
}

QString boolListPut(const bool *array, int count)
{
    return writeList(array, count);
}

void chnEnableGet(const QString &model, QVector<bool> &flags, bool analog)
{
    boolListGet(deviceGet(model, enableKey(analog)), flags.data(), flags.size());
}

void chnEnablePut(const QString &model, const QVector<bool> &flags, bool analog)
{
    deviceSet(model, enableKey(analog), boolListPut(flags.constData(), flags.size()));
}

void chnTrigGet(const QString &model, QVector<int> &kinds, bool analog)
{
    kinds.fill(0);
    intListGet(deviceGet(model, trigKey(analog)), kinds.data(), kinds.size());
    std::replace_if(
        kinds.begin(), kinds.end(), [](int kind) { return kind > 4; }, 0);
}

void chnTrigPut(const QString &model, const QVector<int> &kinds, bool analog)
{
    deviceSet(model, trigKey(analog), intListPut(kinds.constData(), kinds.size()));
}

QVector<int> chnShowIndexGet(int count)
{
    QVector<int> order(qMax(count, 0), 0);
    const int stored = intListGet(globalGet(QStringLiteral("chnShowIndex")), order.data(), order.size());
    fillWithIndex(order, stored);
    if (!isPermutation(order)) {
        fillWithIndex(order, 0);
    }
    return order;
}

void chnShowIndexPut(const QVector<int> &order)
{
    globalSet(QStringLiteral("chnShowIndex"), intListPut(order.constData(), order.size()));
}

QVector<int> chnShowMultipGet(int count)
{
    QVector<int> factors(qMax(count, 0), 1);
    intListGet(globalGet(QStringLiteral("chnShowMultip")), factors.data(), factors.size());
    std::replace_if(
        factors.begin(), factors.end(), [](int f) { return f != 1 && f != 2 && f != 4 && f != 8; }, 1);
    return factors;
}

void chnShowMultipPut(const QVector<int> &factors)
{
    globalSet(QStringLiteral("chnShowMultip"), intListPut(factors.constData(), factors.size()));
}

QString chnShowNameGet(int index)
{
    const QString name = globalGet(QStringLiteral("chnShowName%1").arg(index));
    return name.isEmpty() ? ::tr("Channel") + QLatin1Char(' ') + QString::number(index) : name;
}

QVector<int> AChnHorLabelPosGet(int count)
{
    QVector<int> positions(qMax(count, 0), 0);
    positions.resize(intListGet(globalGet(QStringLiteral("AChnHorLabelPos")), positions.data(), positions.size()));
    return positions;
}

QRect windowPositionGet(const QRect &available)
{
    std::array<int, 4> window{};
    intListGet(globalGet(QStringLiteral("windowPosition")), window.data(), static_cast<int>(window.size()));
    if (isReachable(window, available)) {
        return {window[0], window[1], window[2], window[3]};
    }
    const auto percent = [](int size, int part) { return static_cast<int>(qint64{size} * part / 100); };
    return {percent(available.width(), 10), percent(available.height(), 10), percent(available.width(), 80),
            percent(available.height(), 80)};
}

void windowPositionSet(const QRect &rect)
{
    const std::array<int, 4> window{rect.x(), rect.y(), rect.width(), rect.height()};
    globalSet(QStringLiteral("windowPosition"), intListPut(window.data(), static_cast<int>(window.size())));
}
