#include "protocol/SupportTable.h"
#include "support/GuiTestMain.h"

#include <QAbstractItemModel>
#include <QHeaderView>
#include <QTableView>

class TstSupportTable : public QObject {
    Q_OBJECT
private slots:
    void itTellsWhichModelDecodesWhat();
    void itIsAsWideAsTold();
    void itCannotBeEdited();
};

void TstSupportTable::itTellsWhichModelDecodesWhat()
{
    const SupportTable dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Device Supported List"));
    const QAbstractItemModel &model = *dialog.table()->model();
    QCOMPARE(model.rowCount(), 28);
    QCOMPARE(model.columnCount(), 7);
    QStringList heads;
    for (int column = 0; column < 7; ++column) {
        heads.append(model.headerData(column, Qt::Horizontal).toString());
    }
    QCOMPARE(heads.join(QLatin1Char('|')), QStringLiteral(" |RV2310|RV2320|RV2420|RV2520|RV2540|RV2620"));
    QMap<QString, QString> unsupported;
    for (int row = 0; row < 28; ++row) {
        QString marks;
        for (int column = 1; column < 7; ++column) {
            const QModelIndex cell = model.index(row, column);
            marks += cell.data().toString();
            QCOMPARE(cell.data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
        }
        if (marks != QString(6, QChar(0x25CF))) {
            unsupported.insert(model.index(row, 0).data().toString(), marks.replace(QChar(0x25CF), QLatin1Char('o')));
        }
    }
    QCOMPARE(unsupported, (QMap<QString, QString>{{QStringLiteral(" MIPI-DSI LP"), QStringLiteral("XXXXoo")},
                                                  {QStringLiteral(" QSPI"), QStringLiteral("XXXooo")}}));
    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral(" 1-Wire"));
    QCOMPARE(model.index(27, 0).data().toString(), QStringLiteral(" USB LS/FS"));
}

void TstSupportTable::itIsAsWideAsTold()
{
    const SupportTable dialog;
    QCOMPARE(dialog.table()->columnWidth(0), dp(120));
    QCOMPARE(dialog.table()->columnWidth(6), dp(56));
    QCOMPARE(dialog.width(), dp(120 + 6 * 56 + 110));
    QVERIFY(dialog.minimumHeight() <= dp(500));
    QVERIFY(dialog.table()->verticalHeader()->isHidden());
    QVERIFY(dialog.table()->alternatingRowColors());
}

void TstSupportTable::itCannotBeEdited()
{
    SupportTable dialog;
    dialog.show();
    QCOMPARE(dialog.table()->editTriggers(), QAbstractItemView::NoEditTriggers);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
}

LUX_GUI_TEST(TstSupportTable)
#include "tst_SupportTable.moc"
