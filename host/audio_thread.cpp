// A thread of the host that runs vectors of one instance, one after the other.
#include <algorithm>
#include <cstddef>

#include "host/state.h"
#include "host/system.h"

namespace tesk {

namespace {

// Channels of one vector, with the pointers that perform gets.
struct channels {
    channels(int count, int frames)
        : samples(static_cast<std::size_t>(count),
                  std::vector<double>(static_cast<std::size_t>(frames))) {
        for (auto& channel : samples) pointers.push_back(channel.data());
    }
    std::vector<std::vector<double>> samples;
    std::vector<double*> pointers;
};

}  // namespace

audio_thread::audio_thread(instance& runs, settings with)
    : runs_(runs), with_(std::move(with)), thread_([this] { work(); }) {}

audio_thread::~audio_thread() {
    stop();
}

void audio_thread::stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
}

void audio_thread::work() {
    system::flush_denormals(with_.flush_denormals);
    channels in(runs_.inlets(), with_.vector_size);
    channels out(runs_.outlets(), with_.vector_size);
    for (std::int64_t vector = 0; !stop_.load(); ++vector) {
        if (with_.before_vector) with_.before_vector(vector, in.pointers.data());
        if (runs_.run(in.pointers.data(), out.pointers.data(), with_.vector_size)) ++vectors_;
    }
}

}  // namespace tesk
