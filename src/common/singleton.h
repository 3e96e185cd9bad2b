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
        pthread_mutex_lock(&lock_);
        std::shared_ptr<T> copy = value_.object;
        pthread_mutex_unlock(&lock_);
        return copy;
    }

    static void init()
    {
        std::shared_ptr<T> made = std::make_shared<T>();
        pthread_mutex_lock(&lock_);
        value_.object.swap(made);
        pthread_mutex_unlock(&lock_);
    }

private:
    // exit() lets the holder go while a loop may still be asking for the
    // instance: the reference is taken and dropped under one lock, which
    // has nothing to destroy itself.
    struct Holder {
        std::shared_ptr<T> object;
        ~Holder()
        {
            std::shared_ptr<T> last;
            pthread_mutex_lock(&lock_);
            last.swap(object);
            pthread_mutex_unlock(&lock_);
        }
    };

    static Holder value_;
    static pthread_once_t ponce_;
    static pthread_mutex_t lock_;
};

template <typename T>
typename Singleton<T>::Holder Singleton<T>::value_;

template <typename T>
pthread_once_t Singleton<T>::ponce_ = PTHREAD_ONCE_INIT;

template <typename T>
pthread_mutex_t Singleton<T>::lock_ = PTHREAD_MUTEX_INITIALIZER;

#endif
