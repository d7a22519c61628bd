#include "app/QtTexts.h"

#include "settings/Language.h"

#include <QCoreApplication>
#include <QSet>

#include <array>

namespace {

/// The classes of Qt that say the texts below. The same words elsewhere mean something else: "Delete" is also a key.
const QSet<QByteArray> &contexts()
{
    static const QSet<QByteArray> names{"QFileDialog", "QFileSystemModel",   "QPlatformTheme", "QSidebar",
                                        "QLineEdit",   "QWidgetTextControl", "QScrollBar"};
    return names;
}

/// Source: Qt 5.15.
constexpr std::array texts{
    trLater("Remove"),
    trLater("Name"),
    trLater("OK"),
    trLater("Cancel"),
    trLater("Open"),
    trLater("Look in:"),
    trLater("File &name:"),
    trLater("Files of type:"),
    trLater("&Open"),
    trLater("&Save"),
    trLater("Save"),
    trLater("Back"),
    trLater("Go back"),
    trLater("Forward"),
    trLater("Go forward"),
    trLater("Parent Directory"),
    trLater("Go to the parent directory"),
    trLater("Create New Folder"),
    trLater("Create a New Folder"),
    trLater("&New Folder"),
    trLater("New Folder"),
    trLater("List View"),
    trLater("Change to list view mode"),
    trLater("Detail View"),
    trLater("Change to detail view mode"),
    trLater("Sidebar"),
    trLater("List of places and bookmarks"),
    trLater("Files"),
    trLater("Computer"),
    trLater("Drive"),
    trLater("Folder"),
    trLater("File"),
    trLater("%1 File"),
    trLater("Size"),
    trLater("Type"),
    trLater("Date Modified"),
    trLater("All Files (*)"),
    trLater("Show "),
    trLater("Show &hidden files"),
    trLater("&Rename"),
    trLater("&Delete"),
    trLater("Are you sure you want to delete '%1'?"),
    trLater("'%1' is write protected.\nDo you want to delete it anyway?"),
    trLater("Could not delete directory."),
    trLater("%1\nFile not found.\nPlease verify the correct file name was given."),
    trLater("%1\nDirectory not found.\nPlease verify the correct directory name was given."),
    trLater("<b>The name \"%1\" cannot be used.</b><p>Try using another name, with fewer characters or no "
            "punctuation marks."),
    trLater("Invalid filename"),
    trLater("&Yes"),
    trLater("&No"),
    trLater("&Undo"),
    trLater("&Redo"),
    trLater("Cu&t"),
    trLater("&Copy"),
    trLater("&Paste"),
    trLater("Delete"),
    trLater("Select All"),
    trLater("Scroll here"),
    trLater("Left edge"),
    trLater("Right edge"),
    trLater("Top"),
    trLater("Bottom"),
    trLater("Page left"),
    trLater("Page right"),
    trLater("Page up"),
    trLater("Page down"),
    trLater("Scroll left"),
    trLater("Scroll right"),
    trLater("Scroll up"),
    trLater("Scroll down"),
};

bool isOfQt(const char *text)
{
    static const QSet<QByteArray> all(texts.begin(), texts.end());
    return all.contains(text);
}

} // namespace

void QtTexts::install()
{
    if (qApp->findChild<QtTexts *>() == nullptr) {
        QCoreApplication::installTranslator(new QtTexts(qApp));
    }
}

QString QtTexts::translate(const char *context, const char *sourceText, const char *, int) const
{
    if (!contexts().contains(context) || !isOfQt(sourceText)) {
        return {};
    }
    return ::tr(QString::fromUtf8(sourceText));
}
