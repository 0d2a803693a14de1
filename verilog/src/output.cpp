// Where a built netlist goes: a stream, or a file replaced in one step.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <ostream>
#include <string>
#include <vector>

#include "kalverilog.h"
#include "netlist.h"

namespace kalverilog {

namespace {

Result failed(Result r, std::string error) {
    r.ok = false;
    r.error = std::move(error);
    r.modules.clear();
    return r;
}

std::string systemError(const std::string& what, const std::string& path) {
    return what + " " + path + ": " + std::strerror(errno);
}

// The mode a new file gets from open(2): 0666 less the process's umask. The
// umask can only be read by setting it, so it is set back at once.
mode_t newFileMode() {
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return 0666 & ~mask;
}

bool writeAll(int fd, const detail::textbuf& text) {
    const char* at = text.data();
    std::size_t left = text.size();
    while (left) {
        const ssize_t n = ::write(fd, at, left);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        at += n;
        left -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

Result writeNetlist(kalcomponent* root, std::ostream& out, const Options& options) {
    detail::textbuf text;
    Result r = detail::buildNetlist(root, options, text);
    if (!r.ok) return r;
    try {
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.flush();
        if (!out) return failed(std::move(r), "the output stream failed while the netlist was written");
    } catch (const std::exception& e) {
        return failed(std::move(r),
                      std::string("the output stream failed while the netlist was written: ") + e.what());
    }
    return r;
}

Result writeNetlistFile(kalcomponent* root, const std::string& path, const Options& options) {
    detail::textbuf text;
    Result r = detail::buildNetlist(root, options, text);
    if (!r.ok) return r;
    if (path.empty()) return failed(std::move(r), "no file name was given");
    try {
        // A temporary file in the target's own folder, so that the rename that
        // puts it in place stays within one file system and is atomic.
        std::vector<char> temp(path.begin(), path.end());
        const char suffix[] = ".tmp-XXXXXX";
        temp.insert(temp.end(), suffix, suffix + sizeof suffix);
        const int fd = ::mkstemp(temp.data());
        if (fd < 0) return failed(std::move(r), systemError("cannot create a temporary file beside", path));
        // Nothing below throws until the temporary file is renamed or removed.
        const char* tempPath = temp.data();
        struct stat existing;
        const mode_t mode = ::stat(path.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : newFileMode();
        const char* failedStep = nullptr;
        int error = 0;
        auto failedAt = [&failedStep, &error](const char* step) {
            if (failedStep) return;
            failedStep = step;
            error = errno;
        };
        if (::fchmod(fd, mode) != 0 || !writeAll(fd, text) || ::fsync(fd) != 0) failedAt("cannot write");
        if (::close(fd) != 0) failedAt("cannot write");
        if (!failedStep && ::rename(tempPath, path.c_str()) != 0) failedAt("cannot rename the netlist to");
        if (failedStep) {
            ::unlink(tempPath);
            errno = error;
            return failed(std::move(r), systemError(failedStep, path));
        }
    } catch (const std::exception& e) {
        return failed(std::move(r), std::string("the netlist file could not be written: ") + e.what());
    }
    return r;
}

}  // namespace kalverilog
