// An exclusive lock that serialises the read-modify-write of one file among
// processes: definition files, ini files, profiles and counter files.
#pragma once

namespace kx::core {

// Holds the lock from construction to destruction. The lock lives on a
// companion file beside the locked one, named "." + file name + ".lock",
// because every write replaces the file itself by rename: a lock on the old
// file would not keep out the next writer, who opens the new one. The kernel
// drops the lock of a process that dies, so a killed CGI program never
// leaves a file locked.
class FileLock {
  public:
    // Waits at most kWaitMilliseconds for the lock; Held() says whether it came.
    explicit FileLock(const char *path);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    bool Held() const { return fd_ >= 0; }

    static constexpr int kWaitMilliseconds = 5000;

  private:
    int fd_ = -1;
};

}  // namespace kx::core
