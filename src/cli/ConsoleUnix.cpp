#include "cli/Console.h"

#include <unistd.h>

Console::Console() = default;

Console::~Console() = default;

bool Console::errorIsTerminal()
{
    return isatty(STDERR_FILENO) != 0;
}
