#include "update/UpdateDialog.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "settings/Config.h"
#include "settings/Language.h"
#include "update/UpdateAddress.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

UpdateDialog::UpdateDialog(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      startUpdater([](const QString &program, const QStringList &arguments) {
          return QProcess::startDetached(program, arguments);
      }),
      openLink([](const QUrl &url) { QDesktopServices::openUrl(url); }),
      updaterPath(QCoreApplication::applicationDirPath() + QStringLiteral("/Updater.exe")),
      m_first(new QLabel(this)),
      m_second(new QLabel(this)),
      m_link(new QLabel(this)),
      m_buttons(new QDialogButtonBox(this)), // its standard buttons would bring icons
      m_ok(m_buttons->addButton(::tr("OK"), QDialogButtonBox::AcceptRole)),
      m_cancel(m_buttons->addButton(::tr("Cancel"), QDialogButtonBox::RejectRole))
{
    setWindowTitle(::tr("Check for updates"));
    buildLook();
    connect(m_buttons, &QDialogButtonBox::accepted, this, &UpdateDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &UpdateDialog::reject);
    connect(m_link, &QLabel::linkActivated, this, [this] { openLink(downloadLink); });
    showWaiting();
}

void UpdateDialog::buildLook()
{
    setStyleSheet(messageBoxStyle() + labelStyle() + pushButtonStyle());
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(16), dp(14), dp(16), dp(12));
    column->setSpacing(dp(8));
    for (QLabel *label : {m_first, m_second}) {
        label->setTextFormat(Qt::PlainText); // a part comes from the network
        label->setTextInteractionFlags(Qt::NoTextInteraction);
    }
    m_link->setTextFormat(Qt::RichText);
    m_link->setStyleSheet(QStringLiteral("QLabel{border:%1px solid transparent;}QLabel:focus{border-color:%2;}")
                              .arg(dp(1))
                              .arg(gGreys[0].name()));
    m_link->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    for (QLabel *label : {m_first, m_second, m_link}) {
        label->ensurePolished();
        label->setMinimumSize(dp(340), label->fontMetrics().height() + dp(2)); // the same height in all states
        column->addWidget(label);
    }
    column->addSpacing(dp(4));
    column->addWidget(m_buttons);
    column->setSizeConstraint(QLayout::SetFixedSize); // as large as its texts need, in any language
}

void UpdateDialog::setState(const QString &first, const QString &second, const QUrl &link, bool canUpdate)
{
    const QString address = QString::fromLatin1(link.toEncoded());
    // From the left, where the host stands.
    const QString shown = m_link->fontMetrics().elidedText(address, Qt::ElideRight, dp(480));
    m_first->setText(first);
    m_second->setText(second);
    m_link->setText(UpdateAddress::markup(link, shown));
    m_link->setToolTip(shown == address ? QString() : address.toHtmlEscaped());
    m_link->setFocusPolicy(link.isEmpty() ? Qt::NoFocus : Qt::StrongFocus);
    m_ok->setEnabled(canUpdate);
    (canUpdate ? m_ok : m_cancel)->setDefault(true);
    (canUpdate ? m_ok : m_cancel)->setFocus();
}

void UpdateDialog::showWaiting()
{
    setState(QString(), ::tr("Looking for updates, please wait") + QStringLiteral("..."), QUrl(), false);
}

void UpdateDialog::showAutomatic(const QString &version, const QUrl &download, const QUrl &update)
{
    newVersion = version;
    downloadLink = download;
    updateLink = update;
    setState(QString(), ::tr("Find a new version: ") + version + QStringLiteral(", ") + ::tr("Update now?"), QUrl(),
             true);
}

void UpdateDialog::showManual(const QString &version, const QUrl &download)
{
    newVersion = version;
    downloadLink = download;
    setState(::tr("Find a new version: ") + version, ::tr("Please click the link below to download."), download, false);
}

void UpdateDialog::showLatest()
{
    setState(QString(), ::tr("It's the latest version, no updates required."), QUrl(), false);
}

void UpdateDialog::showFailed()
{
    setState(QString(), ::tr("Update check failed."), QUrl(), false);
}

void UpdateDialog::accept()
{
    if (!m_ok->isEnabled()) {
        return;
    }
    const QStringList arguments{QString::fromLatin1(updateLink.toEncoded()), QStringLiteral(LUX_VERSION), newVersion,
                                globalGet(QStringLiteral("userLang"))};
    if (startUpdater(updaterPath, arguments)) {
        QDialog::accept();
        QApplication::closeAllWindows();
        return;
    }
    setState(::tr("Automatic update failed."), ::tr("Please click the link below to download."), downloadLink, false);
}

void UpdateDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    (m_ok->isEnabled() ? m_ok : m_cancel)->setFocus();
}
