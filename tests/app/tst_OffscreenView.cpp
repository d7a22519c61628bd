// The view that is painted without a window, for a picture.

#include "analyzer/AnalyzerDesk.h"
#include "analyzer/BubbleMaker.h"
#include "analyzer/plugins/TextGate.h"
#include "app/OffscreenView.h"
#include "support/BareSession.h"
#include "support/GuiTestMain.h"
#include "wave/DecodedSource.h"

#include <thread>

class TstOffscreenView : public QObject {
    Q_OBJECT
private slots:
    void aDecoderThatIsLateIsWaitedFor();
};

/// Nothing is painted again when its texts are there.
void TstOffscreenView::aDecoderThatIsLateIsWaitedFor()
{
    const auto session = makeSession(8);
    AnalyzerDesk desk({QStringLiteral("text-waits")});
    QVERIFY(desk.add(0) && desk.waitForWorkers());
    const OffscreenView view(*desk.manager);
    QLibrary file(desk.manager->foundLibraries().at(0).path);
    TextGate &texts = *reinterpret_cast<TextGate *(*)()>(file.resolve("TextGateOf"))();
    texts.held = true;
    std::thread helper([&texts] {
        while (texts.inside == 0) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(5 * BubbleMaker::patience); // longer than a window stands still for
        texts.held = false;
    });
    std::uint32_t told = 0;
    gDecodedSource->visit(0, [&told](const DecodedChannel &decoded) { told += decoded.textsOf(0).count; });
    helper.join();
    QVERIFY(told > 0);
}

LUX_GUI_TEST(TstOffscreenView)
#include "tst_OffscreenView.moc"
