#include "base/JunitFile.h"

#include <fmt/format.h>

#include <iterator>
#include <pugixml.hpp>
#include <sstream>

namespace base {

namespace {
/** XML does not allow control characters. */
std::string xmlText(std::string text)
{
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        c = byte < ' ' && c != '\n' && c != '\t' ? ' ' : c;
    }
    return text;
}

void setAttribute(pugi::xml_node node, const char* name, const std::string& value)
{
    node.append_attribute(name) = xmlText(value).c_str();
}
} // namespace

void JunitSuite::addTest(const std::string& name, const std::string& className, double seconds)
{
    // The schema has the outputs of a suite last, so tests are inserted before them.
    pugi::xml_node suite(mSuite);
    pugi::xml_node test = suite.insert_child_before("testcase", suite.child("system-out"));
    setAttribute(test, "name", name);
    setAttribute(test, "classname", className);
    setAttribute(test, "time", fmt::format("{:.3f}", seconds));
    mTest = test.internal_object();
    count("tests", 1.0);
    count("time", seconds);
}

void JunitSuite::fail(const std::string& type, const std::string& message, const std::string& text)
{
    addResult("failure", type, message, text);
    count("failures", 1.0);
}

void JunitSuite::failToRun(const std::string& type, const std::string& message,
                           const std::string& text)
{
    addResult("error", type, message, text);
    count("errors", 1.0);
}

void JunitSuite::skip(const std::string& message)
{
    setAttribute(pugi::xml_node(mTest).append_child("skipped"), "message", message);
    count("skipped", 1.0);
}

void JunitSuite::addResult(const char* element, const std::string& type, const std::string& message,
                           const std::string& text)
{
    pugi::xml_node result = pugi::xml_node(mTest).append_child(element);
    setAttribute(result, "message", message);
    setAttribute(result, "type", type);
    result.text() = xmlText(text).c_str();
}

void JunitSuite::count(const char* attribute, double amount)
{
    pugi::xml_attribute counter = pugi::xml_node(mSuite).attribute(attribute);
    const double sum = counter.as_double() + amount;
    counter = fmt::format(attribute == std::string("time") ? "{:.3f}" : "{:.0f}", sum).c_str();
}

JunitFile::JunitFile() : mDocument(std::make_unique<pugi::xml_document>())
{
    pugi::xml_node declaration = mDocument->append_child(pugi::node_declaration);
    setAttribute(declaration, "version", "1.0");
    setAttribute(declaration, "encoding", "UTF-8");
    mDocument->append_child("testsuites");
}

JunitFile::~JunitFile() = default;

JunitSuite JunitFile::addSuite(const std::string& name, const std::string& package,
                               const std::string& timestamp, const std::string& host)
{
    pugi::xml_node root = mDocument->child("testsuites");
    const auto id = std::distance(root.children().begin(), root.children().end());
    pugi::xml_node suite = root.append_child("testsuite");
    setAttribute(suite, "name", name);
    setAttribute(suite, "package", package);
    setAttribute(suite, "id", std::to_string(id));
    setAttribute(suite, "timestamp", timestamp);
    setAttribute(suite, "hostname", host);
    for (const char* const counter : {"tests", "failures", "errors", "skipped"}) {
        setAttribute(suite, counter, "0");
    }
    setAttribute(suite, "time", "0.000");
    suite.append_child("properties");
    suite.append_child("system-out");
    suite.append_child("system-err");
    return JunitSuite(suite.internal_object());
}

std::string JunitFile::text() const
{
    std::ostringstream text;
    mDocument->save(text, "  ");
    return text.str();
}

} // namespace base
