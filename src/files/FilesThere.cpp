#include "files/FilesThere.h"

#include "settings/PostedCall.h"

#include <QFileInfo>

#include <mutex>
#include <thread>

struct FilesThere::Link {
    std::mutex mutex;
    FilesThere *owner; ///< null once it has gone
};

FilesThere::FilesThere(QObject *parent)
    : QObject(parent),
      exists([](const QString &path) { return QFileInfo::exists(path); }),
      m_link(std::make_shared<Link>())
{
    m_link->owner = this;
}

FilesThere::~FilesThere()
{
    const std::lock_guard lock(m_link->mutex);
    m_link->owner = nullptr;
}

void FilesThere::ask(const QStringList &paths)
{
    if (m_asking) {
        return;
    }
    m_asking = true;
    std::thread([link = m_link, paths, there = exists] {
        QSet<QString> gone;
        for (const QString &path : paths) {
            if (!there(path)) {
                gone.insert(path);
            }
        }
        const std::lock_guard lock(link->mutex);
        if (FilesThere *const owner = link->owner; owner != nullptr) {
            postCall(owner, [owner, gone] { owner->take(gone); });
        }
    }).detach();
}

void FilesThere::take(const QSet<QString> &gone)
{
    m_asking = false;
    m_gone = gone;
    emit sigAnswered();
}
