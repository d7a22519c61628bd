// Other programs' files in the window: opened, dropped and exported.

#include "app/FileDialogs.h"
#include "app/MenuDesk.h"
#include "files/ForeignFile.h"
#include "settings/HistoryOptions.h"

class TstMainMenuForeign : public QObject, private MenuDesk {
    Q_OBJECT
private slots:
    void init() { setUpMenu(8); }
    void cleanup() { tearDownMenu(); }

    void aDroppedValueChangeDumpIsShown();
    void whatIsExportedOpensAgain_data();
    void whatIsExportedOpensAgain();
    void onlyTheChosenChannelsAreExported();
    void whatWasPassedOverIsToldInTheStatus();
    void aDamagedFileTellsWhereAndChangesNothing();
    void anExportThatFailsIsTold();

private:
    QString writeText(const char *name, const QByteArray &text)
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? file.fileName() : QString();
    }
};

void TstMainMenuForeign::aDroppedValueChangeDumpIsShown()
{
    const QString file = writeText("bus.vcd", "$timescale 1 us $end\n"
                                              "$scope module top $end\n"
                                              "$var wire 1 ! clk $end\n"
                                              "$var wire 1 # data $end\n"
                                              "$upscope $end\n"
                                              "$enddefinitions $end\n"
                                              "#0\n0!\n1#\n#10\n1!\n#20\n0!\n0#\n#100\n");
    drop(file);
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(gOpenFile, file);
    QCOMPARE(m_window->windowTitle(), file + QStringLiteral(" - CorvanLUX"));
    QCOMPARE(gDev->smpData->smpFrequ() * 20, gDev->smpData->nextEdge(1, 0) * 1'000'000); // at 20 us
    QCOMPARE(chnShowNameGet(0), QStringLiteral("clk"));
    QCOMPARE(chnShowNameGet(1), QStringLiteral("data"));
    QCOMPARE(RecentFiles::paths(), QStringList(file));
    QVERIFY(!m_menu->isBusy());
}

void TstMainMenuForeign::whatIsExportedOpensAgain_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("name");
    QTest::newRow("VCD") << FileDialogs::vcd << QStringLiteral("out.vcd");
    QTest::newRow("archive") << FileDialogs::sr << QStringLiteral("out.sr");
}

void TstMainMenuForeign::whatIsExportedOpensAgain()
{
    QFETCH(int, kind);
    QFETCH(QString, name);
    if (kind == FileDialogs::sr && !foreignKindIsBuilt(ForeignKind::Sr)) {
        QSKIP("built without archives");
    }
    capture(20000);
    std::vector<std::int64_t> edges;
    for (std::int64_t pos = 0; pos >= 0 && edges.size() < 20; pos = gDev->smpData->nextEdge(3, pos)) {
        edges.push_back(pos);
    }
    m_path = m_dir->filePath(name);
    QString told;
    connect(m_menu, &MainMenu::fileTold, this, [&told](const QString &text) { told = text; });
    exportAs(kind);
    QCOMPARE(told, QStringLiteral("Saved: ") + name);
    m_menu->openFile(m_path);
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(gDev->smpData->smpFrequ(), 100'000'000);
    QVERIFY(gDev->smpData->sampleCount() > 0);
    std::int64_t pos = 0;
    for (const std::int64_t edge : edges) {
        QCOMPARE(pos, edge);
        pos = gDev->smpData->nextEdge(3, pos);
    }
}

void TstMainMenuForeign::onlyTheChosenChannelsAreExported()
{
    capture(1000);
    m_path = path("some.vcd");
    m_select = [](ExportDataSet &dialog) { pressButton(dialog, QStringLiteral("CH1")); };
    exportAs(FileDialogs::vcd);
    const QByteArray text = bytesOf(m_path);
    QVERIFY(text.contains("$timescale"));
    QCOMPARE(text.count("$var"), gDev->smpData->chnCount - 1);
    QVERIFY(!text.contains("Channel 1 ") && !text.contains("Channel_1 "));
}

void TstMainMenuForeign::whatWasPassedOverIsToldInTheStatus()
{
    const QString file = writeText("x.vcd", "$timescale 1 us $end\n$var wire 1 ! a $end\n$enddefinitions $end\n"
                                            "#0\n0!\n#10\nx!\n#20\n1!\n#30\n");
    QString told;
    connect(m_menu, &MainMenu::fileTold, this, [&told](const QString &text) { told = text; });
    m_menu->openFile(file);
    QCOMPARE(m_boxes->seen.count, 0);
    QVERIFY(!told.isEmpty());
}

void TstMainMenuForeign::aDamagedFileTellsWhereAndChangesNothing()
{
    capture(1000);
    const QString file = writeText("bad.vcd", "$timescale 1 us $end\n$var wire 1 ! a $end\n$enddefinitions $end\n"
                                              "#10\n1!\n#5\n0!\n");
    m_menu->openFile(file);
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("File open failed.\r\n") + file));
    QVERIFY(m_boxes->seen.text.contains(QStringLiteral("line 6")));
    QCOMPARE(gDev->smpData->sampleCount(), 1000);
    QVERIFY(RecentFiles::paths().isEmpty());
}

void TstMainMenuForeign::anExportThatFailsIsTold()
{
#ifdef Q_OS_UNIX
    capture(1000);
    m_path = path("full.vcd");
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), m_path)); // no plain file
    exportAs(FileDialogs::vcd);
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("File save failed.\r\n") + m_path));
    QVERIFY(!m_menu->isBusy());
#endif
}

LUX_GUI_TEST(TstMainMenuForeign)
#include "tst_MainMenuForeign.moc"
