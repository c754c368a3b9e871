#pragma once

#include <string>

namespace sandbox {

/**
 * Gives the calling process private mounts, so that the fixed paths of the simulator can be made
 * without changing anything on the host. The mounts go away with the last process of the namespace;
 * nothing has to be unmounted.
 *
 * Works as root, and for other users in a user namespace that maps the caller's user and group
 * onto themselves. There the caller may mount until it executes a program.
 *
 * Every failure is a std::system_error or std::runtime_error whose text is one line that says
 * what is missing.
 */
class PrivateMounts
{
public:
    /**
     * Enters a new mount namespace, in which every mount is private.
     * Requires: the process has one thread. After a failure, no mount has changed.
     */
    void enter();

    /** Everything below requires that enter() has succeeded; else it throws a std::logic_error. */

    /**
     * Covers the existing directory `path` with a writable tmpfs that has the same entries: links
     * are copied, everything else is bound.
     */
    void coverDirectory(const std::string& path);

    /**
     * Makes `path` (absolute) an empty writable directory. One that exists is covered; for one
     * that does not, the nearest directory above it that exists is covered with coverDirectory().
     */
    void makePrivateDirectory(const std::string& path);

    /** Covers /dev with a writable directory that has only the nodes that every program expects. */
    void makePrivateDev();

    /** Makes the control FIFO's directory empty and writable; the FIFO is not made. */
    void makeEtcVx();

    /** Makes the driver's directory under /sys, empty and writable. */
    void makeDriverDirectory();

    /** Binds the existing file `source` to `target`, which is created as a file if need be. */
    void bindFile(const std::string& source, const std::string& target);

private:
    void checkEntered() const;

    bool mEntered = false;
};

} // namespace sandbox
