#pragma once

#include <mutex>

// A recursive lock held on the heap: the same thread may lock it again.
class Mutex {
public:
    Mutex();
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock();
    void unlock();

private:
    std::recursive_mutex* section_;
};
