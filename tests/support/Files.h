#pragma once

#include <QDir>
#include <QString>
#include <QTemporaryDir>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

/** The parts of a text between the separators; nothing after a last separator. */
Words split(const std::string& text, char separator = ' ');

/** "left" and then "right". */
Words joined(Words left, const Words& right);

/** The bytes of a file; fails the test when it cannot be read. */
std::string readFile(const std::string& path);

/** Makes or replaces a file. */
void writeFile(const std::string& path, const std::string& bytes);

/** Descriptors that this process has open. */
int openDescriptors();

/** True when this process has the file open. */
bool holdsOpen(const std::string& path);

/** The text that many times in a row. */
std::string repeated(const std::string& text, int times);

/** One line of an input value file: channel values 1 to 8, the rest as given. */
std::string valueLine(const std::string& auxWord, const std::string& frequency);

/** A directory for the files of one test. */
class TestFiles
{
public:
    TestFiles() : mDirectory(QDir::tempPath() + "/vx-test-XXXXXX") {}

    /** Full path of a name in the directory. */
    std::string path(const std::string& name) const;

    /** Writes the file and returns its full path. */
    QString make(const std::string& name, const std::string& bytes) const;

private:
    QTemporaryDir mDirectory;
};
