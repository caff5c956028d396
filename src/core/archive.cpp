// Archives over memory and over files.
#include <algorithm>
#include <fstream>
#include <system_error>

#include "tarvex/framework.h"

namespace tarvex {

namespace {

/// A failure to open, read or write, told with the file's name.
[[noreturn]] void ThrowFileFailure(const std::filesystem::path& file, const char* what) {
    throw CArchiveException(file.string() + ": " + what);
}

}  // namespace

struct CArchive::Impl {
    bool loading = false;
    std::span<const std::byte> source;       // what is left to read, when reading memory
    std::vector<std::byte>* sink = nullptr;  // when writing memory
    std::filebuf file;                       // open when reading or writing a file
    std::filesystem::path name;
    std::uint64_t fileRemaining = 0;
};

CArchive::CArchive(std::span<const std::byte> source) : m_impl(std::make_unique<Impl>()) {
    m_impl->loading = true;
    m_impl->source = source;
}

CArchive::CArchive(std::vector<std::byte>& sink) : m_impl(std::make_unique<Impl>()) { m_impl->sink = &sink; }

CArchive::CArchive(const std::filesystem::path& file, Mode mode) : m_impl(std::make_unique<Impl>()) {
    m_impl->loading = mode == load;
    m_impl->name = file;
    if (mode == load) {
        std::error_code failure;
        m_impl->fileRemaining = std::filesystem::file_size(file, failure);
        if (failure) ThrowFileFailure(file, "cannot be read");
    }
    const auto direction = mode == load ? std::ios::in : std::ios::out | std::ios::trunc;
    if (m_impl->file.open(file, direction | std::ios::binary) == nullptr)
        ThrowFileFailure(file, mode == load ? "cannot be read" : "cannot be written");
}

CArchive::~CArchive() = default;

bool CArchive::IsLoading() const { return m_impl->loading; }
bool CArchive::IsStoring() const { return !m_impl->loading; }

std::uint64_t CArchive::Remaining() const {
    if (!m_impl->loading) return 0;
    return m_impl->file.is_open() ? m_impl->fileRemaining : m_impl->source.size();
}

void CArchive::Read(void* data, std::size_t size) {
    if (!m_impl->loading) throw CArchiveException("the archive is being written, not read");
    if (size > Remaining()) throw CArchiveException("the archive ends early");
    if (size == 0) return;
    if (m_impl->file.is_open()) {
        const auto count = static_cast<std::streamsize>(size);
        if (m_impl->file.sgetn(static_cast<char*>(data), count) != count)
            ThrowFileFailure(m_impl->name, "ends early");
        m_impl->fileRemaining -= size;
        return;
    }
    std::memcpy(data, m_impl->source.data(), size);
    m_impl->source = m_impl->source.subspan(size);
}

void CArchive::Write(const void* data, std::size_t size) {
    if (m_impl->loading) throw CArchiveException("the archive is being read, not written");
    if (size == 0) return;
    if (m_impl->sink != nullptr) {
        const auto* bytes = static_cast<const std::byte*>(data);
        m_impl->sink->insert(m_impl->sink->end(), bytes, bytes + size);
        return;
    }
    if (!m_impl->file.is_open()) throw CArchiveException("the archive is closed");
    const auto count = static_cast<std::streamsize>(size);
    if (m_impl->file.sputn(static_cast<const char*>(data), count) != count)
        ThrowFileFailure(m_impl->name, "cannot be written");
}

void CArchive::Expect(std::size_t size) {
    std::vector<std::byte>* const sink = m_impl->sink;
    if (sink == nullptr || size <= sink->capacity() - sink->size()) return;
    // At least twofold, so that many small arrays in one archive do not each move all before them.
    sink->reserve(std::max(sink->size() + size, 2 * sink->capacity()));
}

std::uint32_t CArchive::ReadCount() {
    unsigned char bytes[4];
    Read(bytes, 2);
    const std::uint32_t word = bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8;
    if (word != 0xFFFF) return word;
    Read(bytes, 4);
    return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 | static_cast<std::uint32_t>(bytes[2]) << 16 |
           static_cast<std::uint32_t>(bytes[3]) << 24;
}

void CArchive::WriteCount(std::uint32_t count) {
    const auto byte = [count](int shift) { return static_cast<unsigned char>(count >> shift); };
    if (count < 0xFFFF) {
        const unsigned char word[2] = {byte(0), byte(8)};
        Write(word, sizeof word);
    } else {
        const unsigned char words[6] = {0xFF, 0xFF, byte(0), byte(8), byte(16), byte(24)};
        Write(words, sizeof words);
    }
}

void CArchive::Close() {
    if (!m_impl->file.is_open()) return;
    const bool failed = m_impl->file.close() == nullptr;
    if (failed && !m_impl->loading) ThrowFileFailure(m_impl->name, "cannot be written");
    m_impl->fileRemaining = 0;
}

}  // namespace tarvex
