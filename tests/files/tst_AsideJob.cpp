#include "files/AsideJob.h"
#include "files/ScriptedDialog.h"

#include <QSemaphore>
#include <QTest>

#include <thread>

class TstAsideJob : public QObject {
    Q_OBJECT
private slots:
    void withoutDialogsTheJobIsWaitedFor();
    void aShortJobShowsNoDialog();
    void aLongJobShowsItsProgress();
    void aJobThatIsCancelledIsToldSo();
    void theDialogNamesTheKindOfJob();
};

void TstAsideJob::withoutDialogsTheJobIsWaitedFor()
{
    std::thread::id thread = std::this_thread::get_id();
    bool mayGoOn = false;
    AsideJob({}, AsideJob::Kind::Load).run([&](const AsideJob::GoesOn &goesOn) {
        thread = std::this_thread::get_id();
        mayGoOn = goesOn(0.5);
    });
    QVERIFY(thread != std::this_thread::get_id());
    QVERIFY(mayGoOn);
}

void TstAsideJob::aShortJobShowsNoDialog()
{
    DialogLog log;
    AsideJob job(scripted(log, acceptAtTheEnd), AsideJob::Kind::Load);
    job.dialogDelay = 60000;
    bool ran = false;
    job.run([&ran](const AsideJob::GoesOn &) { ran = true; });
    QVERIFY(ran && log.texts.isEmpty());
}

void TstAsideJob::aLongJobShowsItsProgress()
{
    DialogLog log;
    QSemaphore shown;
    AsideJob job(scripted(log,
                          [&shown](ScriptedDialog &dialog) {
                              shown.release();
                              return dialog.runToTheEnd();
                          }),
                 AsideJob::Kind::Load);
    job.dialogDelay = 0;
    bool mayGoOn = false;
    job.run([&](const AsideJob::GoesOn &goesOn) {
        shown.acquire();
        for (const double share : {-1.0, 0.25, 0.251, 0.5, 7.0}) {
            mayGoOn = goesOn(share);
        }
    });
    QVERIFY(mayGoOn && !log.wrongThread);
    QCOMPARE(log.reports, (std::vector<int>{0, 25, 50, 99, 100}));
    QCOMPARE(log.open, 0);
}

void TstAsideJob::aJobThatIsCancelledIsToldSo()
{
    DialogLog log;
    AsideJob job(scripted(log, [](ScriptedDialog &) { return false; }), AsideJob::Kind::Save);
    job.dialogDelay = 0;
    bool mayGoOn = true;
    job.run([&mayGoOn](const AsideJob::GoesOn &goesOn) {
        while (mayGoOn) {
            mayGoOn = goesOn(0.5);
            std::this_thread::yield();
        }
    });
    QVERIFY(!mayGoOn);
    QCOMPARE(log.texts.size(), 3);
}

void TstAsideJob::theDialogNamesTheKindOfJob()
{
    for (const auto &[kind, title] :
         {std::pair{AsideJob::Kind::Load, "Open File"}, std::pair{AsideJob::Kind::Save, "Save File"}}) {
        DialogLog log;
        AsideJob job(scripted(log, [](ScriptedDialog &) { return false; }), kind);
        job.dialogDelay = 0;
        job.run([](const AsideJob::GoesOn &goesOn) {
            while (goesOn(0)) {
                std::this_thread::yield();
            }
        });
        QCOMPARE(log.texts.constFirst(), QString::fromLatin1(title));
    }
}

QTEST_GUILESS_MAIN(TstAsideJob)
#include "tst_AsideJob.moc"
