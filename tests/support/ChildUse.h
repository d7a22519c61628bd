#pragma once

#include <QtGlobal>

#ifdef Q_OS_UNIX

#include <QByteArray>
#include <QFile>
#include <QStringList>

#include <cstdint>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

/// What a program took while it ran as a child of this one.
struct ChildUse {
    int code = -1;         ///< as it ended; -1 if it could not be run, or was ended by a signal
    std::int64_t peak = 0; ///< bytes of memory; that of this process at the start, if that is more
    double processor = 0;  ///< seconds, all threads
};

/// Runs a program, waits, and drops its standard output.
inline ChildUse runChild(const QString &program, const QStringList &arguments)
{
    std::vector<std::string> words{QFile::encodeName(program).toStdString()};
    for (const QString &argument : arguments) {
        words.push_back(QFile::encodeName(argument).toStdString());
    }
    std::vector<char *> pointers;
    for (std::string &word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int failed = posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage use{};
    if (failed != 0 || wait4(child, &status, 0, &use) != child) {
        return {};
    }
    constexpr double micro = 1e-6;
    const double processor =
        double(use.ru_utime.tv_sec + use.ru_stime.tv_sec) + double(use.ru_utime.tv_usec + use.ru_stime.tv_usec) * micro;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, std::int64_t(use.ru_maxrss) * 1024, processor};
}

#endif
