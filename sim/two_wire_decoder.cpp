#include "two_wire_decoder.h"

#include "soc.h"

namespace {

const uint8_t kPanelAddress = 0x78;
const uint8_t kControlData = 0x40;
const uint8_t kControlContinue = 0x80;

}  // namespace

TwoWireDecoder::TwoWireDecoder(PanelByteSink sink)
    : sink_(sink),
      sda_pin_{-1, -1},
      pulling_(false),
      sda_(1),
      scl_(1),
      in_transaction_(false),
      in_ack_slot_(false),
      bits_(0),
      shift_(0),
      byte_index_(0),
      addressed_(false),
      expect_control_(true),
      single_byte_(false),
      data_mode_(false)
{}

void TwoWireDecoder::attach(SimPin sda, SimPin scl)
{
    SimSoc& soc = SimSoc::instance();
    sda_pin_ = sda;
    sda_ = soc.level(sda.group, sda.bit);
    scl_ = soc.level(scl.group, scl.bit);
    std::shared_ptr<TwoWireDecoder> self = shared_from_this();
    soc.watch(sda.group, sda.bit, [self](int, int, int level) { self->data_changed(level); });
    soc.watch(scl.group, scl.bit, [self](int, int, int level) { self->clock_changed(level); });
}

void TwoWireDecoder::data_changed(int level)
{
    sda_ = level;
    if (scl_ == 0 || in_ack_slot_) {
        return;
    }
    if (level == 0) {
        in_transaction_ = true;
        bits_ = 0;
        shift_ = 0;
        byte_index_ = 0;
        addressed_ = false;
        expect_control_ = true;
    } else {
        in_transaction_ = false;
    }
}

void TwoWireDecoder::clock_changed(int level)
{
    scl_ = level;
    if (!in_transaction_) {
        return;
    }
    if (level == 0) {
        if (in_ack_slot_) {
            in_ack_slot_ = false;
            bits_ = 0;
            shift_ = 0;
            acknowledge(false);
        } else if (bits_ == 8 && addressed_) {
            acknowledge(true);
        }
        return;
    }
    if (bits_ == 8) {
        in_ack_slot_ = true;
        return;
    }
    shift_ = static_cast<uint8_t>((shift_ << 1) | (sda_ != 0 ? 1 : 0));
    if (++bits_ == 8) {
        byte_done(shift_);
    }
}

void TwoWireDecoder::acknowledge(bool pull)
{
    if (pull != pulling_ && sda_pin_.group >= 0) {
        pulling_ = pull;
        SimSoc::instance().pull_low(sda_pin_.group, sda_pin_.bit, pull);
    }
}

void TwoWireDecoder::byte_done(uint8_t byte)
{
    const int index = byte_index_++;
    if (index == 0) {
        addressed_ = byte == kPanelAddress;
        return;
    }
    if (!addressed_) {
        return;
    }
    if (expect_control_) {
        data_mode_ = (byte & kControlData) != 0;
        single_byte_ = (byte & kControlContinue) != 0;
        expect_control_ = false;
        return;
    }
    sink_(data_mode_, byte);
    expect_control_ = single_byte_;
}
