#pragma once

#include <memory>
#include <string>

namespace pugi {
class xml_document;
class xml_node_struct;
} // namespace pugi

namespace base {

/**
 * A suite of tests in a JUnit file for CI systems. Names and texts may be any text: characters that
 * XML does not allow become blanks. Valid as long as its file.
 */
class JunitSuite
{
public:
    /** Begins a test. It passes unless one of the next functions is called. @param seconds it took
     */
    void addTest(const std::string& name, const std::string& className, double seconds = 0.0);

    /** The test failed. */
    void fail(const std::string& type, const std::string& message, const std::string& text);

    /** The test could not be carried out. */
    void failToRun(const std::string& type, const std::string& message, const std::string& text);

    void skip(const std::string& message);

private:
    friend class JunitFile;
    explicit JunitSuite(pugi::xml_node_struct* suite) : mSuite(suite) {}
    void addResult(const char* element, const std::string& type, const std::string& message,
                   const std::string& text);
    void count(const char* attribute, double amount);

    pugi::xml_node_struct* mSuite;
    pugi::xml_node_struct* mTest = nullptr;
};

/** A JUnit file: suites with tests. Owns all of them. */
class JunitFile
{
public:
    JunitFile();
    JunitFile(const JunitFile&) = delete;
    JunitFile& operator=(const JunitFile&) = delete;
    ~JunitFile();

    /**
     * @param package common to the suites of a file
     * @param timestamp of its start, "2026-11-25T22:00:01" in UTC
     */
    JunitSuite addSuite(const std::string& name, const std::string& package,
                        const std::string& timestamp, const std::string& host = "localhost");

    std::string text() const;

private:
    std::unique_ptr<pugi::xml_document> mDocument;
};

} // namespace base
