// The buffered file writer and the number formatting of every text writer.
#include <zol/io/TextWriterInternal.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ZOL {

char* FormatReal(char* first, double value) {
    // to_chars with a precision is defined as printf with "%.6g" in the C locale,
    // which is what an ostream with default flags produces.
    return std::to_chars(first, first + kNumberTextMax, value, std::chars_format::general, 6).ptr;
}

char* FormatInt(char* first, std::int64_t value) {
    return std::to_chars(first, first + kNumberTextMax, value).ptr;
}

FileWriter::FileWriter(const std::string& fileName)
    : mpFile(std::fopen(fileName.c_str(), "wb")),
      mpBuffer(mpFile != nullptr ? new char[kCapacity] : nullptr) {}

FileWriter::~FileWriter() { Close(); }

void FileWriter::PutBytes(const void* data, std::size_t size) {
    const char* bytes = static_cast<const char*>(data);
    while (size > 0) {
        if (mUsed == kCapacity) Flush();
        const std::size_t chunk = std::min(size, kCapacity - mUsed);
        std::memcpy(mpBuffer.get() + mUsed, bytes, chunk);
        mUsed += chunk;
        bytes += chunk;
        size -= chunk;
    }
}

void FileWriter::Flush() {
    if (mpFile != nullptr && mUsed > 0 && !mFailed) {
        mFailed = std::fwrite(mpBuffer.get(), 1, mUsed, mpFile) != mUsed;
    }
    mUsed = 0;
}

bool FileWriter::Close() {
    if (mpFile == nullptr) return false;
    Flush();
    const bool closed = std::fclose(mpFile) == 0;
    mpFile = nullptr;
    return closed && !mFailed;
}

}  // namespace ZOL
