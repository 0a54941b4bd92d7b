#pragma once

class Mutex;

// Holds a Mutex for the life of the object.
class MutexLock {
public:
    explicit MutexLock(Mutex& mutex);
    ~MutexLock();
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};
