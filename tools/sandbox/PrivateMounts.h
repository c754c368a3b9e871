#pragma once

#include <string>

namespace sandbox {

/**
 * Gives the calling process mounts of its own, so that the fixed paths of the simulator can be
 * made without changing anything on the host. What is mounted lives as long as a process in the
 * namespace does; nothing has to be taken down.
 *
 * Works with the right to mount (root) and without it, in a user namespace that maps the caller's
 * own user and group onto themselves. There the caller has the right to mount until it executes a
 * program.
 *
 * Every failure is a std::system_error or std::runtime_error whose text is one line that says
 * what is missing.
 */
class PrivateMounts
{
public:
    /**
     * Enters a mount namespace of its own, with every mount private.
     * Requires: the process has one thread. After a failure it is still where it was, or in a
     * namespace without any change to its mounts.
     */
    void enter();

    /** Requires of everything below: enter() has succeeded; else a std::logic_error. */

    /**
     * Replaces the existing directory `path` by a writable tmpfs that holds all the directory
     * held: links are made again, everything else is bound in.
     */
    void coverDirectory(const std::string& path);

    /**
     * Makes `path` (absolute) an empty writable directory. One that exists is covered; for one
     * that does not, the nearest directory above it that exists is covered with coverDirectory().
     */
    void makePrivateDirectory(const std::string& path);

    /** Replaces /dev by a writable directory with only the nodes every program expects. */
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
