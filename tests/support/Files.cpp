#include "Files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace {
using Descriptors = std::filesystem::directory_iterator;
constexpr char kDescriptorDirectory[] = "/proc/self/fd";
} // namespace

Words split(const std::string& text, char separator)
{
    Words parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

Words joined(Words left, const Words& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    EXPECT_TRUE(file.good()) << path;
}

int openDescriptors()
{
    return static_cast<int>(std::distance(Descriptors(kDescriptorDirectory), Descriptors()));
}

bool holdsOpen(const std::string& path)
{
    for (const auto& entry : Descriptors(kDescriptorDirectory)) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry.path(), error) == path) {
            return true;
        }
    }
    return false;
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (; times > 0; --times) {
        all += text;
    }
    return all;
}

std::string valueLine(const std::string& auxWord, const std::string& frequency)
{
    return ";;" + auxWord + ";0;" + frequency + ";1;2;3;4;5;6;7;8\n";
}

std::string TestFiles::path(const std::string& name) const
{
    return mDirectory.path().toStdString() + "/" + name;
}

QString TestFiles::make(const std::string& name, const std::string& bytes) const
{
    writeFile(path(name), bytes);
    return QString::fromStdString(path(name));
}
