#include "controls/LazyComboBox.h"
#include "controls/Look.h"
#include "controls/Style.h"

#include <QAbstractItemView>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStyledItemDelegate>
#include <QTest>
#include <QVBoxLayout>

namespace {

/// A window of such boxes.
struct Desk {
    explicit Desk(const QStringList &entries)
    {
        window.setStyleSheet(comboBoxStyle());
        box = new LazyComboBox(&window);
        box->addItems(entries);
        layout.addWidget(box, 0, Qt::AlignLeft);
    }
    [[nodiscard]] bool hasList() const { return box->findChild<QAbstractItemView *>() != nullptr; }
    /// The width that the box leaves to a text.
    [[nodiscard]] int roomForText() const
    {
        QStyleOptionComboBox option;
        option.initFrom(box);
        const QRect field =
            box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box);
        return field.width() - 2; // a pixel at each side is kept clear
    }
    QWidget window;
    QVBoxLayout layout{&window};
    LazyComboBox *box;
};

const QStringList channels{QStringLiteral("0 - 'SCL'    (I2C - SCL)"), QStringLiteral("1 - 'SDA'    (I2C - SDA)"),
                           QStringLiteral("None")};

} // namespace

class TstLazyComboBox : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { globalsFillTables(); }
    void init() { globalsSetDpi(96); }

    void itsListIsMadeWhenItIsOpened();
    void itsListLooksLikeThatOfOtherBoxes();
    void eachEntryCanBeRead_data();
    void eachEntryCanBeRead();
};

void TstLazyComboBox::itsListIsMadeWhenItIsOpened()
{
    Desk desk(channels);
    desk.box->setFixedWidth(desk.box->widthOfEntries());
    desk.box->setCurrentIndex(1);
    desk.window.show();
    QVERIFY(QTest::qWaitForWindowActive(&desk.window));
    QVERIFY(!desk.hasList());
    QCOMPARE(desk.box->width(), desk.box->widthOfEntries());
    QCOMPARE(desk.box->height(), controlHeight(desk.box->fontMetrics()));
    QTest::keyClick(desk.box, Qt::Key_Down, Qt::AltModifier);
    QVERIFY(desk.hasList());
    QTRY_VERIFY(desk.box->view()->isVisible());
    QTest::keyClick(desk.box->view(), Qt::Key_Down);
    QTest::keyClick(desk.box->view(), Qt::Key_Return);
    QCOMPARE(desk.box->currentIndex(), 2);
}

void TstLazyComboBox::itsListLooksLikeThatOfOtherBoxes()
{
    Desk desk(channels);
    auto *other = new QComboBox(&desk.window);
    other->addItems(channels);
    dressComboBox(*other);
    desk.window.show();
    QVERIFY(QTest::qWaitForWindowActive(&desk.window));
    for (QComboBox *box : {static_cast<QComboBox *>(desk.box), other}) {
        box->showPopup();
        QVERIFY(qobject_cast<QStyledItemDelegate *>(box->itemDelegate()) != nullptr);
        box->hidePopup();
    }
    QCOMPARE(desk.box->view()->sizeHintForRow(0), other->view()->sizeHintForRow(0));
    QCOMPARE(desk.box->maxVisibleItems(), other->maxVisibleItems());
    QAbstractItemDelegate *first = desk.box->itemDelegate();
    desk.box->showPopup();
    QCOMPARE(desk.box->itemDelegate(), first); // dressed once
}

void TstLazyComboBox::eachEntryCanBeRead_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 120, 144, 192}) {
        QTest::addRow("%d dpi", dpi) << dpi;
    }
}

void TstLazyComboBox::eachEntryCanBeRead()
{
    QFETCH(int, dpi);
    globalsSetDpi(dpi);
    for (const QString &entry : channels) {
        Desk desk({entry});
        QFont font = gFontMain;
        font.setPixelSize(dp(12));
        desk.box->setFont(font);
        desk.box->setFixedWidth(desk.box->widthOfEntries());
        desk.window.show();
        QVERIFY(desk.box->fontMetrics().horizontalAdvance(entry) <= desk.roomForText());
    }
}

QTEST_MAIN(TstLazyComboBox)
#include "tst_LazyComboBox.moc"
