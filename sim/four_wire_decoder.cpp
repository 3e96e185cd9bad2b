#include "four_wire_decoder.h"

#include "soc.h"

FourWireDecoder::FourWireDecoder(PanelByteSink sink) : sink_(sink), sda_(0), cs_(1), dc_(0), bits_(0), shift_(0) {}

void FourWireDecoder::attach(SimPin data, SimPin clock, SimPin chip_select, SimPin data_command)
{
    SimSoc& soc = SimSoc::instance();
    sda_ = soc.level(data.group, data.bit);
    cs_ = soc.level(chip_select.group, chip_select.bit);
    dc_ = soc.level(data_command.group, data_command.bit);
    std::shared_ptr<FourWireDecoder> self = shared_from_this();
    soc.watch(data.group, data.bit, [self](int, int, int level) { self->data_changed(level); });
    soc.watch(clock.group, clock.bit, [self](int, int, int level) { self->clock_changed(level); });
    soc.watch(chip_select.group, chip_select.bit, [self](int, int, int level) { self->chip_select_changed(level); });
    soc.watch(data_command.group, data_command.bit, [self](int, int, int level) { self->data_command_changed(level); });
}

void FourWireDecoder::chip_select_changed(int level)
{
    cs_ = level;
    bits_ = 0;
    shift_ = 0;
}

void FourWireDecoder::clock_changed(int level)
{
    if (level == 0 || cs_ != 0) {
        return;
    }
    shift_ = static_cast<uint8_t>((shift_ << 1) | (sda_ != 0 ? 1 : 0));
    if (++bits_ == 8) {
        sink_(dc_ != 0, shift_);
        bits_ = 0;
        shift_ = 0;
    }
}
