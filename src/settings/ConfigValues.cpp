// The typed readers and writers of Config.h: lists and channel settings. They see the document only through globalGet,
// deviceGet and their counterparts.

#include "settings/Config.h"
#include "settings/Language.h"

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

void AChnHorLabelPosPut(const QVector<int> &positions)
{
    globalSet(QStringLiteral("AChnHorLabelPos"), intListPut(positions.constData(), positions.size()));
}
