// For how long the window stands still while it is used: the longest gap of the event loop in each of the things that
// users do, in ms (`gap`), and the processor time in one (`gapProcessor`). One frame of a screen is 16 ms. The
// yardstick is `bareWindow`.

#include "LoopGap.h"
#include "Yardsticks.h"
#include "analyzer/AnalyzerManager.h"
#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "controls/MyScrollbar.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "files/CaptureFile.h"
#include "panels/ExportDataSet.h"
#include "panels/Toolbar.h"
#include "protocol/ProtocolEdit.h"
#include "protocol/ProtocolResult.h"
#include "protocol/ProtocolSetting.h"
#include "protocol/ResultView.h"
#include "protocol/SearchEdit.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "settings/Language.h"
#include "store/SmpWriter.h"
#include "support/BareSession.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"
#include "wave/WaveView.h"

#include <QAction>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int longWait = 60000; // ms
constexpr int few = 60;
constexpr int many = 2'000'000; ///< enough for a progress dialog

/// A program without hardware, and files of its own.
class Desk {
public:
    Desk()
    {
        QFile::remove(configPath());
        configLoad();
        gOpenFile.clear();
        m_session = makeSession();
        m_window = std::make_unique<MainWindow>(*m_session);
        m_window->resize(fullHd);
        m_window->show();
        settle();
    }
    ~Desk()
    {
        m_window.reset();
        m_session.reset();
    }
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    /// Lets the loop run until nothing is left to do.
    static void settle(int ms = 150) { QTest::qWait(ms); }

    /// A capture of that many transitions on each of four channels.
    static void fill(int transitions)
    {
        SmpData &data = *gDev->smpData;
        const std::vector<std::uint8_t> enable(std::size_t(data.chnCount), 1);
        data.begin(0, 100'000'000, enable);
        for (int chn = 0; chn < 4; ++chn) {
            const std::vector<std::int32_t> widths(std::size_t(transitions), 10 + chn);
            std::int64_t pos = 0;
            (void)data.addPulses(widths, chn, pos);
        }
        const std::int64_t samples = std::int64_t(transitions) * 14;
        SmpWriter(data).setSmpCount(samples);
        data.finish(samples);
    }

    /// A file with such a capture.
    [[nodiscard]] QString save(int transitions) const
    {
        fill(transitions);
        const QString path = m_dir.filePath(QStringLiteral("%1.cxdat").arg(transitions));
        const CapturePart whole{std::vector<std::uint8_t>(std::size_t(gDev->smpData->chnCount), 1), 0,
                                double(gDev->smpData->smpCount())};
        (void)CaptureFile(digitalChannelsOf).save(path, *gDev->smpData, whole, configCopy());
        return path;
    }

    void drop(const QString &path) const
    {
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_window.get(), &enter); // who takes the drag gets the drop
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_window.get(), &event);
    }

    /// Exports the capture as text, by the dialogs.
    void exportText() const
    {
        const DialogDriver<ExportDataSet> selection(
            [](ExportDataSet &dialog) { pressButton(dialog, QStringLiteral("OK")); });
        const DialogDriver<QFileDialog> file(
            [this](QFileDialog &dialog) { chooseFile(dialog, m_dir.filePath(QStringLiteral("export.txt"))); });
        QAction text(nullptr);
        constexpr int textKind = 2;
        text.setData(textKind);
        m_window->findChild<MainMenu *>()->slotExportMenuTrig(&text);
    }

    [[nodiscard]] Session &session() const { return *m_session; }
    [[nodiscard]] MainWindow &window() const { return *m_window; }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<MainWindow> m_window;
};

void openFile(benchmark::State &state)
{
    const Desk desk;
    const QString path = desk.save(int(state.range(0)));
    Desk::fill(1);
    for (auto _ : state) {
        LoopGap gap;
        desk.drop(path);
        Desk::settle();
        gap.report(state);
    }
    if (gDev->smpData->sampleCount() != state.range(0) * 14) {
        state.SkipWithError("not opened");
    }
}
BENCHMARK(openFile)->Arg(few)->Arg(many)->Iterations(1)->Unit(benchmark::kMillisecond);

void anotherModel(benchmark::State &state)
{
    const Desk desk;
    constexpr int sixteenChannels = 5;
    for (auto _ : state) {
        LoopGap gap;
        desk.window().slotDevPreConnect(int(state.range(0)));
        Desk::settle();
        desk.window().slotDevPreConnect(sixteenChannels);
        Desk::settle();
        gap.report(state);
    }
}
BENCHMARK(anotherModel)->Arg(8)->Arg(9)->Arg(97)->Iterations(1)->Unit(benchmark::kMillisecond);

/// Chooses another language, and goes on without the restart that it takes.
void anotherLanguage(benchmark::State &state)
{
    const Desk desk;
    auto &menu = *desk.window().findChild<MainMenu *>();
    menu.slotMainMenuPopup(); // builds it
    QApplication::activePopupWidget()->close();
    Desk::settle();
    const QVector<LanguageInfo> languages = languageList();
    const QString chosen = globalGet(QStringLiteral("userLang"));
    QAction other(nullptr);
    other.setData(languages.value(0).code == chosen ? 1 : 0);
    DialogDriver<QMessageBox> box([](QMessageBox &dialog) { dialog.reject(); });
    for (auto _ : state) {
        LoopGap gap;
        menu.slotLangMenuTrig(&other);
        Desk::settle();
        gap.report(state);
    }
    if (box.count == 0) {
        state.SkipWithError("not asked");
    }
}
BENCHMARK(anotherLanguage)->Iterations(1)->Unit(benchmark::kMillisecond);

void exportCapture(benchmark::State &state)
{
    const Desk desk;
    Desk::fill(int(state.range(0)));
    emit gDev->sigSmpDataReady();
    Desk::settle();
    for (auto _ : state) {
        LoopGap gap;
        desk.exportText();
        Desk::settle();
        gap.report(state);
    }
}
BENCHMARK(exportCapture)->Arg(few)->Arg(many)->Iterations(1)->Unit(benchmark::kMillisecond);

void simulatedCapture(benchmark::State &state)
{
    const Desk desk;
    for (auto _ : state) {
        LoopGap gap;
        desk.window().findChild<Toolbar *>()->slotShortcutF5();
        const bool ended = QTest::qWaitFor([] { return gDev->smpData->sampleCount() > 0; }, longWait);
        Desk::settle();
        gap.report(state);
        if (!ended) {
            state.SkipWithError("no capture");
        }
    }
}
BENCHMARK(simulatedCapture)->Iterations(1)->Unit(benchmark::kMillisecond);

void zoomByWheel(benchmark::State &state)
{
    const Desk desk;
    Desk::fill(many);
    emit gDev->sigSmpDataReady();
    Desk::settle();
    auto *waves = desk.window().findChild<WaveView *>();
    for (auto _ : state) {
        LoopGap gap;
        for (int step = 0; step < 40; ++step) {
            const QPointF at(waves->width() / 3.0, waves->height() / 2.0);
            QWheelEvent event(at, waves->mapToGlobal(at.toPoint()), {}, QPoint(0, step < 20 ? 120 : -120), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(waves->viewport(), &event);
            Desk::settle(20);
        }
        gap.report(state);
    }
}
BENCHMARK(zoomByWheel)->Iterations(1)->Unit(benchmark::kMillisecond);

/// A decoder of ten million frames: an edge of the clock each.
class DecodeScript {
public:
    static constexpr int frames = 10'000'000;

    explicit DecodeScript(const Desk &desk)
        : m_manager(*desk.window().findChild<AnalyzerManager *>()),
          m_panel(*desk.window().findChild<ProtocolSetting *>()),
          m_results(*desk.window().findChild<ProtocolResult *>())
    {}

    /// The decoder with the clock on the first channel, until all is decoded.
    void add() const
    {
        m_manager.addLibIndex = libraryOf(QStringLiteral("Parallel.dll"));
        Analyzer *analyzer = m_manager.createAnalyzer(m_manager.addLibIndex);
        analyzer->GetAnalyzerSettings()->LoadText("clk=0,d0=1,d1=2,clock_edge=rising");
        m_manager.addAnalyzer(analyzer);
        finish();
    }
    /// Another setting, by the dialog: the next entry of its last list.
    void edit() const
    {
        const DialogDriver<ProtocolEdit> dialog([](ProtocolEdit &edit) {
            QComboBox *last = edit.findChildren<QComboBox *>().last();
            last->setCurrentIndex((last->currentIndex() + 1) % last->count());
            pressButton(edit, QStringLiteral("OK"));
        });
        m_panel.slotEditWanted(0);
        finish();
    }
    /// By the row, by the page, and to many places of the list.
    void scroll() const
    {
        for (int i = 0; i < 20; ++i) {
            emit m_results.view->keyMoved(i % 2 == 0 ? Qt::Key_Down : Qt::Key_PageDown);
            Desk::settle(20);
        }
        const qlonglong most = m_results.view->bar->maxV;
        for (int i = 0; i < 20; ++i) {
            m_results.view->bar->setValue(most / 20 * (i * 7 % 20));
            Desk::settle(20);
        }
    }
    void search() const
    {
        for (const char *text : {"0", "0x", "0x3", ""}) {
            m_results.search->setText(QLatin1String(text));
            Desk::settle();
        }
    }
    void remove() const
    {
        m_manager.removeAnalyzer(0);
        Desk::settle();
    }
    void finish() const
    {
        (void)QTest::qWaitFor([this] { return !m_manager.isWorkerRunning(0); }, longWait);
        Desk::settle();
    }
    [[nodiscard]] std::uint64_t found() const
    {
        AnalyzerResults *results = nullptr;
        m_manager.analyzerAt(0)->GetAnalyzerResults(&results);
        return results->GetNumFrames();
    }

private:
    [[nodiscard]] int libraryOf(const QString &fileName) const
    {
        const QVector<AnalyzerLib> &all = m_manager.foundLibraries();
        const auto found =
            std::find_if(all.begin(), all.end(), [&](const auto &of) { return of.fileName == fileName; });
        return int(found - all.begin());
    }

    AnalyzerManager &m_manager;
    ProtocolSetting &m_panel;
    ProtocolResult &m_results;
};

template<class Step>
void part(benchmark::State &state, const char *name, const Step &step)
{
    LoopGap gap;
    step();
    gap.reportPart(state, name);
}

/// What a user does with a decoder, one after the other; the counters of the steps are processor time, ms.
void decodedSession(benchmark::State &state)
{
    const Desk desk;
    const DecodeScript script(desk);
    Desk::fill(2 * DecodeScript::frames + 4); // the last word has no end
    emit gDev->sigSmpDataReady();
    Desk::settle();
    for (auto _ : state) {
        part(state, "add", [&] { script.add(); });
        const std::uint64_t added = script.found();
        part(state, "edit", [&] { script.edit(); });
        part(state, "scroll", [&] { script.scroll(); });
        part(state, "search", [&] { script.search(); });
        part(state, "remove", [&] { script.remove(); });
        script.add(); // the capture finds ten million frames too
        part(state, "capture", [&] {
            desk.window().findChild<Toolbar *>()->slotShortcutF5();
            Desk::settle();
            (void)QTest::qWaitFor([&] { return desk.session().mayStartCapture(); }, longWait);
            script.finish();
        });
        script.remove();
        state.counters["frames"] = double(added);
        if (added < DecodeScript::frames) {
            state.SkipWithError(("only " + std::to_string(added) + " frames").c_str());
        }
    }
}
BENCHMARK(decodedSession)->Iterations(1)->Unit(benchmark::kMillisecond);

/// The yardstick.
void bareWindow(benchmark::State &state)
{
    showBareWindows(state);
}
BENCHMARK(bareWindow)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_DATA_HOME", home.path().toLocal8Bit());
    QApplication application(argc, argv);
    startGuiTest();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
