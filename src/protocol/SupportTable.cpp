#include "protocol/SupportTable.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "settings/Language.h"

#include <QAbstractItemView>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace {

constexpr int nameWidth = 120; // units, as all below
constexpr int modelWidth = 56;
constexpr int besideTable = 110;
constexpr int leastHeight = 500;

enum Models : unsigned { RV2310 = 1, RV2320 = 2, RV2420 = 4, RV2520 = 8, RV2540 = 16, RV2620 = 32, AllModels = 63 };

struct Support {
    const char *analyzer;
    unsigned models;
};

constexpr std::array<const char *, 6> modelNames = {"RV2310", "RV2320", "RV2420", "RV2520", "RV2540", "RV2620"};

constexpr std::array<Support, 28> supports = {{{"1-Wire", AllModels},
                                               {"Atmel SWI", AllModels},
                                               {"CAN", AllModels},
                                               {"DMX-512", AllModels},
                                               {"HDMI CEC", AllModels},
                                               {"I2C", AllModels},
                                               {"I2S/PCM", AllModels},
                                               {"IR-NEC", AllModels},
                                               {"JTAG", AllModels},
                                               {"LCD1602/12864", AllModels},
                                               {"LIN", AllModels},
                                               {"Manchester", AllModels},
                                               {"MDIO", AllModels},
                                               {"MIDI", AllModels},
                                               {"MIPI-DSI LP", RV2540 | RV2620},
                                               {"Modbus", AllModels},
                                               {"Parallel", AllModels},
                                               {"Parallel 8080", AllModels},
                                               {"Parallel 6800", AllModels},
                                               {"PS/2 Keyboard", AllModels},
                                               {"QSPI", RV2520 | RV2540 | RV2620},
                                               {"SDIO", AllModels},
                                               {"SMBus", AllModels},
                                               {"SPI", AllModels},
                                               {"SWD", AllModels},
                                               {"UART/RS232/485", AllModels},
                                               {"UNI/O", AllModels},
                                               {"USB LS/FS", AllModels}}};

QStandardItem *cell(const QString &text, Qt::Alignment alignment)
{
    auto *item = new QStandardItem(text);
    item->setTextAlignment(alignment);
    item->setEditable(false);
    return item;
}

QStandardItemModel *makeModel(QObject *parent)
{
    auto *model = new QStandardItemModel(parent);
    QStringList heads{QStringLiteral(" ")};
    for (const char *name : modelNames) {
        heads.append(QLatin1String(name));
    }
    model->setHorizontalHeaderLabels(heads);
    for (const Support &support : supports) {
        QList<QStandardItem *> row{
            cell(QLatin1Char(' ') + QLatin1String(support.analyzer), Qt::AlignLeft | Qt::AlignVCenter)};
        for (unsigned i = 0; i < modelNames.size(); ++i) {
            const bool can = (support.models & 1U << i) != 0;
            row.append(cell(can ? QString(QChar(0x25CF)) : QStringLiteral("X"), Qt::AlignCenter));
            row.constLast()->setAccessibleText(can ? ::tr("Supported") : ::tr("Not Supported"));
        }
        model->appendRow(row);
    }
    return model;
}

QString tableStyle()
{
    return QStringLiteral("QTableView{background-color:#ffffff;alternate-background-color:#f4f4f8;color:#1f1f23;"
                          "gridline-color:#d8d8d8;selection-background-color:#c8d4ec;selection-color:#1f1f23;"
                          "border:1px solid #d8d8d8;outline:0;}"
                          "QTableView::item{border:0;}"
                          "QTableView::item:selected{background-color:#c8d4ec;color:#1f1f23;}"
                          "QHeaderView{background-color:#eeeeff;}"
                          "QHeaderView::section{background-color:#eeeeff;color:#1f1f23;"
                          "border-right:1px solid #d8d8d8;border-left:0;border-top:0;"
                          "border-bottom:1px solid #d8d8d8;}");
}

} // namespace

SupportTable::SupportTable(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_table(new QTableView(this))
{
    setWindowTitle(::tr("Device Supported List"));
    // All on the dialog: a header does not take the sheet of a table that stood in a dialog when that got its own.
    setStyleSheet(messageBoxStyle() + pushButtonStyle() + scrollBarStyle() + tableStyle());
    buildTable();
    const int width = dp(nameWidth + int(modelNames.size()) * modelWidth + besideTable);
    const int side = (width - m_table->width()) / 2;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(side, dp(10), side, dp(10));
    column->setSpacing(dp(8));
    column->addWidget(m_table);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(::tr("Close"), QDialogButtonBox::RejectRole)->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);

    setFixedWidth(width);
    const QScreen *screen = QGuiApplication::primaryScreen();
    const int most = screen != nullptr ? screen->availableSize().height() - dp(40) : dp(leastHeight);
    setMinimumHeight(std::min(dp(leastHeight), most));
    m_table->setFocus();
}

void SupportTable::buildTable()
{
    m_table->setModel(makeModel(m_table));
    m_table->setAccessibleName(windowTitle());
    m_table->setAlternatingRowColors(true);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->verticalHeader()->setDefaultSectionSize(std::max(dp(22), m_table->fontMetrics().height() + dp(4)));
    m_table->setColumnWidth(0, dp(nameWidth));
    for (int model = 1; model <= int(modelNames.size()); ++model) {
        m_table->setColumnWidth(model, dp(modelWidth));
    }
    m_table->ensurePolished();
    m_table->setFixedWidth(m_table->horizontalHeader()->length() + m_table->verticalScrollBar()->sizeHint().width() +
                           2 * m_table->frameWidth());
}
