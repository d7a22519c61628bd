#include "controls/Style.h"
#include "protocol/SupportTable.h"
#include "support/GuiTestMain.h"

#include <QAbstractItemModel>
#include <QGuiApplication>
#include <QHeaderView>
#include <QImage>
#include <QScreen>
#include <QTableView>

class TstSupportTable : public QObject {
    Q_OBJECT
private slots:
    void init() { globalsSetDpi(96); }
    void cleanup() { qApp->setStyleSheet(QString()); }

    void itTellsWhichModelDecodesWhat();
    void itIsAsWideAsTold();
    void itCannotBeEdited();
    void theHeaderHasItsOwnGround();
    void theKeyboardMarksAWholeRow();
    void theTableEndsWithItsLastColumn_data();
    void theTableEndsWithItsLastColumn();
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
    const int most = QGuiApplication::primaryScreen()->availableSize().height() - dp(40);
    QCOMPARE(dialog.minimumHeight(), std::min(dp(500), most));
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

void TstSupportTable::theHeaderHasItsOwnGround()
{
    qApp->setStyleSheet(programStyle());
    SupportTable dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const QImage header = dialog.table()->horizontalHeader()->grab().toImage();
    for (const int y : {2, header.height() / 2, header.height() - 4}) {
        QCOMPARE(header.pixelColor(dp(10), y).name(), QStringLiteral("#eeeeff"));
    }
    QCOMPARE(header.pixelColor(dp(120) - 1, header.height() / 2).name(), QStringLiteral("#d8d8d8"));
}

void TstSupportTable::theKeyboardMarksAWholeRow()
{
    qApp->setStyleSheet(programStyle());
    SupportTable dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const auto colors = [&dialog](int row) { // of the grounds, beside the texts
        QTableView &table = *dialog.table();
        const QImage image = table.viewport()->grab().toImage();
        QStringList names;
        for (int column = 0; column < 7; ++column) {
            const QRect cell = table.visualRect(table.model()->index(row, column));
            for (const int x : {cell.left(), cell.right() - dp(1)}) {
                names.append(image.pixelColor(x, cell.center().y()).name());
            }
        }
        names.removeDuplicates();
        return names.join(QLatin1Char('|'));
    };
    QTest::keyClick(dialog.table(), Qt::Key_Up); // it is the first one already
    QCOMPARE(colors(0), QStringLiteral("#ffffff"));
    QTest::keyClick(dialog.table(), Qt::Key_Down);
    QCOMPARE(colors(0), QStringLiteral("#ffffff"));
    QCOMPARE(colors(1), QStringLiteral("#c8d4ec"));
}

void TstSupportTable::theTableEndsWithItsLastColumn_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96 dpi") << 96;
    QTest::newRow("192 dpi") << 192;
}

void TstSupportTable::theTableEndsWithItsLastColumn()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    qApp->setStyleSheet(programStyle());
    SupportTable dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const QTableView &table = *dialog.table();
    QCOMPARE(table.horizontalHeader()->length(), table.viewport()->width());
    QCOMPARE(table.x(), dialog.width() - table.geometry().right() - 1); // in the middle of the dialog
    QVERIFY(table.x() >= dp(10));
}

LUX_GUI_TEST(TstSupportTable)
#include "tst_SupportTable.moc"
