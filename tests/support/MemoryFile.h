#pragma once

#include <QString>
#include <string>

/** A file in memory, which has a path as long as the object lives. */
class MemoryFile
{
public:
    explicit MemoryFile(const std::string& bytes);
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile();

    QString path() const;

private:
    std::string mPath;
};
