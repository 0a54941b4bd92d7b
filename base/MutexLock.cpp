#include "base/MutexLock.h"

#include "base/Mutex.h"

MutexLock::MutexLock(Mutex& mutex) : mutex_(mutex) {
    mutex_.lock();
}

MutexLock::~MutexLock() {
    mutex_.unlock();
}
