#ifndef OLED_COMMON_SINGLETON_H
#define OLED_COMMON_SINGLETON_H

#include <pthread.h>

#include <memory>

// Process-wide holder of one lazily created object. Creation happens in
// whichever thread asks first; pthread_once makes that exactly once.
template <typename T>
class Singleton {
public:
    static std::shared_ptr<T> instance()
    {
        pthread_once(&ponce_, &Singleton::init);
        return value_;
    }

    static void init()
    {
        value_ = std::make_shared<T>();
    }

private:
    static std::shared_ptr<T> value_;
    static pthread_once_t ponce_;
};

template <typename T>
std::shared_ptr<T> Singleton<T>::value_;

template <typename T>
pthread_once_t Singleton<T>::ponce_ = PTHREAD_ONCE_INIT;

#endif
