#include "corvanlux/analyzer/ExportWriter.h"

#include "ExportPrivate.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <system_error>

namespace lux {
namespace {

/// The file that a path names: UTF-8 on Windows, bytes as the system has them elsewhere.
std::filesystem::path namedFile(const std::string &path)
{
#ifdef _WIN32
    return std::u8string(path.begin(), path.end());
#else
    return path;
#endif
}

std::FILE *openFile(const std::string &path, const char *mode)
{
#ifdef _WIN32
    return _wfopen(namedFile(path).c_str(), std::filesystem::path(mode).c_str());
#else
    return std::fopen(path.c_str(), mode);
#endif
}

} // namespace

// ---- the file -------------------------------------------------------------------------------------------------------

ExportWriter::Private::Private(const char *filePath, DisplayBase displayBase, std::int64_t rate,
                               std::atomic<double> &progressTold, const std::atomic<bool> &cancelFlag)
    : path(filePath),
      base(displayBase),
      sampleRate(std::max<std::int64_t>(rate, 1)),
      progress(progressTold),
      cancelled(cancelFlag)
{
    buffer.reserve(bufferSize);
    file = openFile(path, "wb");
    if (file == nullptr)
        fail();
}

ExportWriter::Private::~Private()
{
    if (file == nullptr)
        return; // whole
    std::fclose(file);
    std::error_code ignored;
    const std::filesystem::path named = namedFile(path);
    if (std::filesystem::is_regular_file(named, ignored))
        std::filesystem::remove(named, ignored);
}

void ExportWriter::Private::fail() const
{
    throw std::system_error(errno, std::generic_category(), path);
}

void ExportWriter::Private::leaveWhenCancelled() const
{
    if (cancelled.load(std::memory_order_relaxed))
        throw detail::ExportEnd();
}

void ExportWriter::Private::flush()
{
    leaveWhenCancelled();
    if (std::fwrite(buffer.data(), 1, buffer.size(), file) != buffer.size())
        fail();
    buffer.clear();
}

void ExportWriter::Private::close()
{
    flush();
    if (std::fflush(file) != 0)
        fail();
    std::FILE *open = file;
    if (std::fclose(open) != 0) {
        file = openFile(path, "ab"); // for the destructor to remove it
        fail();
    }
    file = nullptr;
}

// ---- what decoders write --------------------------------------------------------------------------------------------

ExportWriter::ExportWriter(Private &internals) : m_private(internals) {}

ExportWriter::~ExportWriter() = default;

DisplayBase ExportWriter::base() const
{
    return m_private.base;
}

bool ExportWriter::isCsv() const
{
    constexpr std::string_view ending = ".csv";
    const std::string &path = m_private.path;
    return path.size() >= ending.size() &&
           std::equal(ending.begin(), ending.end(), path.end() - std::ptrdiff_t(ending.size()),
                      [](char small, char c) { return small == (c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c); });
}

void ExportWriter::write(std::string_view text)
{
    constexpr std::size_t most = Private::bufferSize;
    for (; text.size() > most; text.remove_prefix(most))
        m_private.put(text.data(), most);
    m_private.put(text.data(), text.size());
}

void ExportWriter::write(std::span<const std::uint8_t> bytes)
{
    write(std::string_view(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
}

void ExportWriter::byte(std::uint8_t value)
{
    const char c = char(value);
    m_private.put(&c, 1);
}

void ExportWriter::little(std::uint64_t value, unsigned bytes)
{
    for (unsigned i = 0; i < bytes; ++i)
        byte(std::uint8_t(i < 8 ? value >> (8 * i) : 0));
}

void ExportWriter::big(std::uint64_t value, unsigned bytes)
{
    for (unsigned i = bytes; i-- > 0;)
        byte(std::uint8_t(i < 8 ? value >> (8 * i) : 0));
}

void ExportWriter::patch(std::uint64_t at, std::span<const std::uint8_t> bytes)
{
    m_private.flush();
    if (at > std::uint64_t(std::numeric_limits<long>::max()) || at + bytes.size() > m_private.written)
        return;
    if (std::fseek(m_private.file, long(at), SEEK_SET) != 0 ||
        std::fwrite(bytes.data(), 1, bytes.size(), m_private.file) != bytes.size() ||
        std::fseek(m_private.file, 0, SEEK_END) != 0)
        m_private.fail();
}

std::uint64_t ExportWriter::size() const
{
    return m_private.written;
}

void ExportWriter::field(std::string_view text)
{
    if (m_private.lineBegun)
        write(std::string_view(","));
    m_private.lineBegun = true;
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        write(text);
        return;
    }
    std::string quoted = "\"";
    for (const char c : text)
        quoted.append(c == '"' ? 2 : 1, c);
    quoted += '"';
    write(quoted);
}

void ExportWriter::endLine()
{
    m_private.lineBegun = false;
    write(std::string_view("\n"));
}

ShortText ExportWriter::seconds(std::int64_t sample) const
{
    const std::int64_t rate = m_private.sampleRate;
    ShortText out = formatCount(sample / rate);
    out.add('.');
    std::int64_t rest = sample % rate;
    for (std::int64_t reach = 1; reach < rate || reach == 1; reach *= 10) { // until one sample is a digit
        rest *= 10;
        out.add(char('0' + rest / rate));
        rest %= rate;
    }
    return out;
}

void ExportWriter::progress(std::uint64_t done, std::uint64_t total)
{
    m_private.leaveWhenCancelled();
    constexpr std::uint64_t tellEach = 1024;
    constexpr double nearlyAll = 0.999; // 1.0 is for the file that is closed
    if (total > 0 && done % tellEach == 0)
        m_private.progress.store(std::min(nearlyAll, double(done) / double(total)), std::memory_order_relaxed);
}

} // namespace lux
