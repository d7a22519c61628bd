#include "cli/Console.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#ifndef ENABLE_VIRTUAL_TERMINAL_PROCESSING
#define ENABLE_VIRTUAL_TERMINAL_PROCESSING 0x0004 // Windows 10
#endif

Console::Console() : m_codePage(GetConsoleOutputCP())
{
    _setmode(_fileno(stdout), _O_BINARY);
    if (m_codePage != 0) {
        SetConsoleOutputCP(CP_UTF8);
    }
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(error, &mode) != 0 && SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0) {
        m_mode = mode;
    }
}

Console::~Console()
{
    if (m_mode != 0) {
        SetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), m_mode);
    }
    if (m_codePage != 0) {
        SetConsoleOutputCP(m_codePage);
    }
}

bool Console::write(std::string_view bytes, std::FILE *to)
{
    return std::fwrite(bytes.data(), 1, bytes.size(), to) == bytes.size() && std::fflush(to) == 0;
}

std::FILE *Console::open(const QString &path)
{
    return _wfopen(reinterpret_cast<const wchar_t *>(path.utf16()), L"wb");
}

bool Console::errorIsTerminal()
{
    DWORD mode = 0; // of a file or a pipe there is none
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0 &&
           (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}
