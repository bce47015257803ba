#pragma once

#include <travik/datablocks.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

/// What the tests share: the platform layer observed, blocks from words and random bytes, texts.
namespace Support {

/// Collects the error signals of its lifetime.
class Signals {
public:
    Signals() {
        before_ = Travik::CErrorManager::setSignalHandler(
            [this](int code, const QString& text) { all_.emplace_back(code, text.toStdString()); });
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals() { Travik::CErrorManager::setSignalHandler(before_); }

    const std::vector<std::pair<int, std::string>>& all() const { return all_; }
    std::size_t count() const { return all_.size(); }
    void clear() { all_.clear(); }

private:
    std::function<void(int, const QString&)> before_;
    std::vector<std::pair<int, std::string>> all_;
};

/// Collects message boxes and, once the debug layer lets them through, lines.
class DebugOutput {
public:
    DebugOutput() {
        lineBefore_ = Travik::Debug::setLineHandler([this](int cls, int level, const QString& text) {
            lines.push_back(std::to_string(cls) + "/" + std::to_string(level) + " " + text.toStdString());
        });
        boxBefore_ = Travik::Debug::setMessageBoxHandler([this](const QString& title, const QString& text) {
            boxes.push_back(title.toStdString() + "|" + text.toStdString());
        });
    }
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;
    ~DebugOutput() {
        Travik::Debug::setLineHandler(lineBefore_);
        Travik::Debug::setMessageBoxHandler(boxBefore_);
        Travik::HwDebug::setDebugMask(0);
    }

    std::vector<std::string> lines;
    std::vector<std::string> boxes;

private:
    std::function<void(int, int, const QString&)> lineBefore_;
    std::function<void(const QString&, const QString&)> boxBefore_;
};

/// Little-endian words as an image.
inline std::string image(std::initializer_list<unsigned int> words) {
    std::string bytes;
    for (const unsigned int word : words) {
        bytes += static_cast<char>(word & 0xFFU);
        bytes += static_cast<char>(word >> 8U);
    }
    return bytes;
}

inline void setBytes(Travik::HwDatablock& block, const std::string& bytes) {
    block.setData(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
}

inline std::string bytesOf(Travik::HwDatablock& block) {
    const QMemArray<char> data = block.getByteArrayData();
    return {data.data(), data.size()};
}

/// A block's text, on a stream in its default state.
inline std::string textOf(Travik::HwDatablock& block) {
    std::ostringstream os;
    block.printToStream(os);
    return os.str();
}

/// Takes texts of any length, and keeps nothing.
class NullBuffer : public std::streambuf {
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char* /*text*/, std::streamsize length) override { return length; }
};

/// The identifiers that the tests of the families hold. Each table of a family's classes, and whatever tests a class
/// apart, says beside it which it holds; a class that none of them holds fails a test of the catalogue.
class Held {
public:
    explicit Held(std::initializer_list<int> identifiers) { all().insert(identifiers); }
    template <class Table, class Identifier>
    Held(const Table& table, Identifier identifier) {
        for (const auto& row : table)
            all().insert(std::invoke(identifier, row));
    }

    static std::set<int>& all() {
        static std::set<int> identifiers;
        return identifiers;
    }
};

inline std::string randomBytes(std::mt19937& random, std::size_t size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() & 0xFFU);
    return bytes;
}

/// The image with a checksum that fits its whole length.
inline std::string sealed(std::string bytes) {
    bytes[4] = bytes[5] = 0;
    Travik::HwDatablock block(false);
    const unsigned short checksum = block.computeChecksum(reinterpret_cast<unsigned short*>(bytes.data()),
                                                          static_cast<unsigned short>(bytes.size()));
    bytes[4] = static_cast<char>(checksum & 0xFF);
    bytes[5] = static_cast<char>(checksum >> 8);
    return bytes;
}

} // namespace Support
