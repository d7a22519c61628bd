// Whatever an analog channel holds, its measurement stays within its arrays and gives no text or seventeen fields.

#include "analysis/AnalogParameters.h"
#include "store/SmpData.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

namespace {

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    static constexpr std::array probes{1, 10, 100, 0, -1, std::numeric_limits<int>::max()};
    static constexpr std::array<std::int64_t, 6> rates{1'000'000,   1, 3,
                                                       100'000'000, 0, std::numeric_limits<std::int64_t>::max()};
    constexpr std::size_t fields = 17;
    if (size < 1) {
        return 0;
    }
    const int probe = probes[bytes[0] % probes.size()];
    const std::int64_t rate = rates[bytes[0] / probes.size() % rates.size()];
    const std::uint8_t *end = bytes + std::min<std::size_t>(size, SmpAChnBuffer::capacity);
    const std::vector<std::int8_t> samples(bytes + 1, end); // of its own: what lies beside it is seen

    const QString text = analogParameters(samples, rate, probe);
    if (text.isEmpty()) {
        return 0;
    }
    const QStringList parts = text.split(QLatin1Char(','));
    require(std::size_t(parts.size()) == fields, "seventeen fields");
    for (const QString &part : parts) {
        const int mark = part.indexOf(QLatin1Char(':'));
        require(mark > 0 && mark + 1 < part.size() && part.count(QLatin1Char(':')) == 1, "name and value");
    }
    return 0;
}
