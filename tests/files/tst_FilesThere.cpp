#include "files/DataFileBytes.h"
#include "files/FilesThere.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

#include <memory>

class TstFilesThere : public QObject {
    Q_OBJECT
private slots:
    void aFileThatIsGoneIsTold();
    void aQuestionThatWaitsIsNotAskedAgain();
    void whoAskedMayGoBeforeTheAnswer();
};

void TstFilesThere::aFileThatIsGoneIsTold()
{
    const FileFolder folder;
    const QString there = folder.write("x", QStringLiteral("there"));
    const QString gone = folder.path(QStringLiteral("gone"));
    FilesThere files;
    QSignalSpy answered(&files, &FilesThere::sigAnswered);
    files.ask({there, gone});
    QVERIFY(!files.isGone(gone)); // not known yet
    QVERIFY(answered.wait());
    QVERIFY(files.isGone(gone) && !files.isGone(there));
    QVERIFY(!folder.write("x", QStringLiteral("gone")).isEmpty());
    files.ask({there, gone});
    QVERIFY(answered.wait());
    QVERIFY(!files.isGone(gone));
}

void TstFilesThere::aQuestionThatWaitsIsNotAskedAgain()
{
    FilesThere files;
    QSemaphore answers;
    files.exists = [&answers](const QString &) {
        answers.acquire();
        return true;
    };
    QSignalSpy answered(&files, &FilesThere::sigAnswered);
    files.ask({QStringLiteral("/a")});
    files.ask({QStringLiteral("/b")});
    answers.release();
    QVERIFY(answered.wait());
    files.ask({QStringLiteral("/c")});
    answers.release();
    QVERIFY(answered.wait());
    QCOMPARE(answered.count(), 2);
}

void TstFilesThere::whoAskedMayGoBeforeTheAnswer()
{
    const auto asked = std::make_shared<QSemaphore>();
    const auto answers = std::make_shared<QSemaphore>();
    const auto done = std::make_shared<QSemaphore>();
    {
        FilesThere files;
        files.exists = [asked, answers,
                        tell = std::shared_ptr<void>(nullptr, [done](void *) { done->release(); })](const QString &) {
            asked->release();
            answers->acquire();
            return false;
        };
        files.ask({QStringLiteral("/a")});
        asked->acquire();
    }
    answers->release();
    done->acquire(); // the thread has let go of all it had
    QCoreApplication::processEvents();
}

QTEST_GUILESS_MAIN(TstFilesThere)
#include "tst_FilesThere.moc"
