#include "base/Mutex.h"

Mutex::Mutex() : section_(new std::recursive_mutex) {}

Mutex::~Mutex() {
    delete section_;
}

void Mutex::lock() {
    section_->lock();
}

void Mutex::unlock() {
    section_->unlock();
}
