// The view as a picture: into a file, and into the clipboard.

#include "app/MainMenu.h"
#include "app/PictureWriter.h"
#include "app/ViewPicture.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>

void MainMenu::actSavePicture()
{
    const QString path = saveFileDialog(5);
    if (path.isEmpty() || !viewPicture) {
        return;
    }
    const ViewPicture picture = viewPicture();
    if (QFileInfo(path).suffix().compare(QLatin1String("svg"), Qt::CaseInsensitive) != 0) {
        m_pictures->writePng(path, picture.image());
        return;
    }
    const QString title =
        gOpenFile.isEmpty() ? QStringLiteral("CorvanLUX") : QFileInfo(shownName(gOpenFile)).fileName();
    m_pictures->writeSvg(path, {picture.shapes(), picture.size(), logicalDpiX(), title});
}

void MainMenu::copyPicture()
{
    if (viewPicture) {
        QApplication::clipboard()->setImage(viewPicture().image());
        emit fileTold(::tr("The picture has been copied."));
    }
}
