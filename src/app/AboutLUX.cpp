#include "app/AboutLUX.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "device/DevInit.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "settings/HostSystem.h"
#include "settings/Language.h"
#include "store/MemBudget.h"
#include "store/PhysicalMemory.h"

#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSysInfo>
#include <QVBoxLayout>

namespace {

QString mebibytes(std::int64_t bytes)
{
    return QString::number(bytes / (1024 * 1024)) + QStringLiteral("MB");
}

QLabel *addLine(QBoxLayout &column, const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    column.addWidget(label);
    return label;
}

QBoxLayout *productLines()
{
    auto *column = new QVBoxLayout;
    column->setSpacing(dp(4));
    QLabel *name = addLine(*column, QStringLiteral("CorvanLUX"));
    name->setFont(gFontLarge);
    name->setAlignment(Qt::AlignCenter);
    name->setStyleSheet(QStringLiteral("color:#ff4500;background-color:%1;border-radius:%2px;padding:%2px;")
                            .arg(gGreys.value(9).name())
                            .arg(dp(3)));
    addLine(*column, QStringLiteral("%1 %2 (%3-bit)")
                         .arg(::tr("Version:"), QStringLiteral(LUX_VERSION))
                         .arg(int(QSysInfo::WordSize)));
    addLine(*column, QStringLiteral("Copyright (c) 2026 The CorvanLUX developers"));
    return column;
}

} // namespace

SystemInfo systemInfoNow()
{
    SystemInfo info;
    info.os = osName();
    info.dotsPerInch = QGuiApplication::primaryScreen()->logicalDotsPerInch();
    info.memoryTotal = physicalMemoryBytes();
    info.memoryUsable = memBudgetStart;
    info.memoryUsed = memBudgetStart - memBudget.load(std::memory_order_relaxed);
    info.bcdUsb = gUsb != nullptr ? gUsb->bcdUsb.load() : 0;
    info.devUid = gDev->devUid;
    info.hardwareVersion = hardwareVersion.load(std::memory_order_relaxed);
    return info;
}

QString systemInfoText(const SystemInfo &info)
{
    const QStringList lines{
        ::tr("OS: ") + info.os,
        ::tr("Screen DPI: ") + QString::number(info.dotsPerInch, 'g', 6),
        ::tr("Total Memory: ") + mebibytes(info.memoryTotal),
        ::tr("Usable Memory: ") + mebibytes(info.memoryUsable),
        ::tr("Used Memory: ") + mebibytes(info.memoryUsed),
        ::tr("USB Level: ") + QString::number(info.bcdUsb, 16),
        ::tr("Device ID: ") + QString::fromLatin1(info.devUid.toHex()) +
            QStringLiteral("%1").arg(info.hardwareVersion, 4, 16, QLatin1Char('0')),
    };
    return lines.join(QLatin1Char('\n'));
}

AboutLUX::AboutLUX(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setWindowTitle(::tr("About") + QStringLiteral(" CorvanLUX"));
    setStyleSheet(messageBoxStyle() + labelStyle() + groupBoxStyle() + pushButtonStyle());

    auto *logo = new QLabel(this);
    logo->setFixedSize(dp(72), dp(72));
    logo->setStyleSheet(QStringLiteral("border-image:url(:/res/imgLogo);"));
    auto *head = new QHBoxLayout;
    head->setSpacing(dp(16));
    head->addWidget(logo);
    head->addLayout(productLines(), 1);

    auto *box = new QGroupBox(::tr("System Information"), this);
    auto *info = new QLabel(systemInfoText(systemInfoNow()), box);
    info->setObjectName(QStringLiteral("systemInfo"));
    info->setTextFormat(Qt::PlainText);
    info->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    info->setAccessibleName(box->title());
    info->setFocusPolicy(Qt::StrongFocus);
    info->setStyleSheet(QStringLiteral("QLabel{border:%1px solid transparent;border-radius:%2px;padding:%2px;}"
                                       "QLabel:focus{border-color:%3;}")
                            .arg(dp(1))
                            .arg(dp(3))
                            .arg(gGreys.value(2).name()));
    auto *inner = new QVBoxLayout(box);
    inner->setContentsMargins(dp(10), dp(6), dp(10), dp(8));
    inner->addWidget(info);

    auto *close = new QPushButton(::tr("Close"), this);
    close->setDefault(true);
    close->setFocus();
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(16), dp(14), dp(16), dp(12));
    column->setSpacing(dp(12));
    column->addLayout(head);
    column->addWidget(box);
    column->addLayout(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
}
