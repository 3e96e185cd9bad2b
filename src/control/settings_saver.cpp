#include "settings_saver.h"

#include <memory>

#include "singleton.h"
#include "software_config.h"

namespace {

#ifdef OLEDD_LITERAL_SAVES
const int64_t kQuiet = 0;  // every change written at once: a benchmark's baseline
#else
const int64_t kQuiet = SettingsSaver::kQuietMs;
#endif

std::string store_text()
{
    return Singleton<SoftwareConfig>::instance()->Serialize();
}

}  // namespace

SettingsSaver::SettingsSaver() : pending_(false), failed_(false), written_(false), written_ms_(0)
{
    // An error-checking lock: a thread that takes it twice is told so
    // instead of waiting for itself.
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

SettingsSaver::~SettingsSaver()
{
    pthread_mutex_destroy(&mutex_);
}

bool SettingsSaver::lock()
{
    return pthread_mutex_lock(&mutex_) == 0;
}

void SettingsSaver::unlock()
{
    pthread_mutex_unlock(&mutex_);
}

void SettingsSaver::after_change(int64_t now_ms)
{
    failed_ = false;
    const std::string text = store_text();
    // Nothing new to write (a query) is saved at once: the file is not
    // rewritten and the lines are printed as ever.
    if (text == saved_ || !written_ || now_ms - written_ms_ >= kQuiet) {
        save(now_ms);
        return;
    }
    pending_ = true;
    unsaved_ = text;
}

void SettingsSaver::save(int64_t now_ms)
{
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    if (config->Serialize() != saved_) {
        written_ = true;
        written_ms_ = now_ms;
    }
    const std::string wanted = config->Serialize();
    const bool saved = config->SaveConfig();
    config->ReadConfig();
    // The file is the old one, whole: the change stays in memory (and in
    // what replies show) and goes with the next save that can be made,
    // not with a retry every second that would print the settings each
    // time.
    if (!saved) {
        config->Restore(wanted);
    }
    config->PrintConfig();
    failed_ = !saved;
    pending_ = !saved;
    unsaved_ = saved ? std::string() : wanted;
    if (saved) {
        saves_ = saves_ + (wanted != saved_ ? 1 : 0);
        saved_ = wanted;
    }
}

int64_t SettingsSaver::due_ms()
{
    if (!lock()) {
        return -1;
    }
    const int64_t due = pending_ && !failed_ ? written_ms_ + kQuiet : -1;
    unlock();
    return due;
}

void SettingsSaver::save_if_due(int64_t now_ms)
{
    if (!lock()) {
        return;
    }
    if (pending_ && !failed_ && now_ms - written_ms_ >= kQuiet) {
        save(now_ms);
    }
    unlock();
}

void SettingsSaver::save_pending()
{
    // Refused only to the thread that is changing the settings itself (a
    // signal taken in the middle of a datagram): its change is not whole.
    if (!lock()) {
        return;
    }
    if (pending_) {
        save(written_ms_ + kQuiet);
    }
    unlock();
}

SettingsSaver& process_settings_saver()
{
    // Never destroyed: the signal path may still save while exit() runs
    // the destructors of statics.
    static SettingsSaver* saver = new SettingsSaver;
    return *saver;
}

void save_pending_settings()
{
    process_settings_saver().save_pending();
}
