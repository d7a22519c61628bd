#pragma once

#include "settings/Config.h"
#include "settings/Language.h"

#include <QFile>
#include <QTemporaryDir>

#include <initializer_list>

/// A language of the test's own, which is the user's while this lives: some texts of one analyzer have a star before
/// them.
class StarredTexts {
public:
    /// @param analyzer  its name  @param texts  in English, as XML
    StarredTexts(const char *analyzer, std::initializer_list<const char *> texts)
    {
        QFile file(m_folder.filePath(QStringLiteral("xx.xml")));
        if (!file.open(QIODevice::WriteOnly)) {
            return; // the test will miss the stars
        }
        QByteArray entries;
        for (const char *text : texts) {
            entries += QByteArray("<t class=\"") + analyzer + "\" src=\"" + text + "\">*" + text + "</t>";
        }
        file.write("<language><head><code>xx</code><name>X</name><info>I</info></head><lux/><analyzers>" + entries +
                   "</analyzers></language>");
        file.close();
        use("xx");
    }
    StarredTexts(const StarredTexts &) = delete;
    StarredTexts &operator=(const StarredTexts &) = delete;
    ~StarredTexts() { use("en-US"); }

private:
    void use(const char *code) const
    {
        globalSet(QStringLiteral("userLang"), QString::fromLatin1(code));
        languageLoadFrom(m_folder.path(), QLocale::c());
    }

    QTemporaryDir m_folder;
};
