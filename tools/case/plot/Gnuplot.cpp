#include "plot/Gnuplot.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/CaseError.h"

namespace plot {

namespace {
/** What passes to and from the program: files without a name, so that neither waits for the other.
 */
class PassedFile
{
public:
    PassedFile() : mFile(std::tmpfile(), &std::fclose)
    {
        if (!mFile) {
            throw base::CaseError(fmt::format("a temporary file: {}", std::strerror(errno)));
        }
    }

    int descriptor() const { return fileno(mFile.get()); }

    void write(const std::string& text)
    {
        if (std::fwrite(text.data(), 1, text.size(), mFile.get()) != text.size() ||
            std::fflush(mFile.get()) != 0) {
            throw base::CaseError(fmt::format("a temporary file: {}", std::strerror(errno)));
        }
        std::rewind(mFile.get());
    }

    std::string content()
    {
        std::rewind(mFile.get());
        std::string content;
        char part[BUFSIZ];
        while (const size_t size = std::fread(part, 1, sizeof(part), mFile.get())) {
            content.append(part, size);
        }
        return content;
    }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> mFile;
};

/** @return what posix_spawnp does: 0, or why the program cannot be started */
int start(std::string name, const PassedFile& input, const PassedFile& output,
          const PassedFile& messages, pid_t* child)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.descriptor(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages.descriptor(), STDERR_FILENO);
    char* const words[] = {name.data(), nullptr};
    const int error = posix_spawnp(child, name.c_str(), &actions, nullptr, words, environ);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

bool endsWell(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
} // namespace

std::string runGnuplot(const std::string& script)
{
    PassedFile input;
    PassedFile output;
    PassedFile messages;
    input.write(script);
    pid_t child = 0;
    const int error = start("gnuplot", input, output, messages, &child);
    if (error == ENOENT) {
        throw base::CaseError(
            "gnuplot draws the picture, and it is missing: install the package "
            "gnuplot-nox");
    }
    if (error != 0) {
        throw base::CaseError(fmt::format("gnuplot: {}", std::strerror(error)));
    }
    if (!endsWell(child)) {
        throw base::CaseError("gnuplot: " + messages.content());
    }
    return output.content();
}

void expectFont()
{
    const PassedFile input;
    PassedFile output;
    const PassedFile messages;
    pid_t child = 0;
    // What cannot be asked may have one.
    if (start("fc-list", input, output, messages, &child) == 0 && endsWell(child) &&
        output.content().empty()) {
        throw base::CaseError(
            "the texts of a PNG picture need a font, and there is none: install the package "
            "fonts-dejavu-core");
    }
}

} // namespace plot
