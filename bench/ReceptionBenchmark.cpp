// Time and heap allocations per RTP packet on the way from a datagram to the queue of a track:
// Stack, H.264 depacketizer, MediaTrack. No sockets.

#include <benchmark/benchmark.h>

#include <vector>

#include "CountedAllocations.hpp"
#include "Player/MediaTrack.hpp"
#include "Processors/RTP/H264.hpp"
#include "RTP/Stack.hpp"
#include "support/Packets.hpp"

namespace {

using namespace Player;
using TestSupport::Bytes;

constexpr unsigned kPacketsPerUnit = 24;  // 8 Mbit/s at 30 units a second
constexpr unsigned kUnits = 40;
constexpr unsigned kPayload = 1388;
constexpr unsigned kTicksPerUnit = 3000;

/// Access units of fragments, as a sender with an MTU of 1400 makes them.
std::vector<Bytes> Fragments() {
    std::vector<Bytes> lPackets;
    for (unsigned lUnit = 0; lUnit < kUnits; ++lUnit) {
        for (unsigned lIdx = 0; lIdx < kPacketsPerUnit; ++lIdx) {
            const bool lLast = kPacketsPerUnit - 1 == lIdx;
            Bytes lPayload(kPayload, 0x55);
            lPayload[0] = 0x7C;
            lPayload[1] = static_cast<Byte>((0 == lIdx ? 0x80 : 0) | (lLast ? 0x40 : 0) | 5);
            lPackets.push_back(TestSupport::RtpPacket()
                                   .Seq(lUnit * kPacketsPerUnit + lIdx)
                                   .Timestamp(lUnit * kTicksPerUnit)
                                   .Ssrc(1)
                                   .Marker(lLast)
                                   .Payload(lPayload)
                                   .Build());
        }
    }
    return lPackets;
}

/// Swaps each pair of neighbours.
std::vector<Bytes> Reordered(std::vector<Bytes> aPackets) {
    for (std::size_t lIdx = 0; lIdx + 1 < aPackets.size(); lIdx += 2) {
        std::swap(aPackets[lIdx], aPackets[lIdx + 1]);
    }
    return aPackets;
}

void Receive(benchmark::State& aState, const std::vector<Bytes>& aPackets) {
    RTP::Stack lStack;
    lStack.SetTimeRes(90000);
    const SharedPtr<Properties, SharedObject> lInfo(new Properties);
    const SharedPtr<Consumers::MediaTrack, SharedObject> lTrack(new Consumers::MediaTrack(lInfo));
    lInfo->Insert("Transport", "RTP/AVP");
    lInfo->Insert("Format", "H264");
    const SharedPtr<Processor, SharedObject> lH264 = Processors::RTP::H264::Create(*lInfo);
    lH264->Attach(lTrack);

    const std::size_t lBefore = Allocations();
    std::size_t lPackets = 0;
    std::size_t lSamples = 0;
    for (auto lIteration : aState) {
        static_cast<void>(lIteration);
        lStack.Flush(Time::Now());
        for (const Bytes& lPacket : aPackets) {
            lStack.HandleRTP(lPacket.data(), static_cast<UInt>(lPacket.size()), Time::Now());
        }
        while (!lStack.Empty()) {
            lH264->Handle(lStack.Pop(), lStack.AdjustedLatestTime());
        }
        while (lTrack->Pop()) {
            ++lSamples;
        }
        lPackets += aPackets.size();
    }
    aState.SetItemsProcessed(static_cast<std::int64_t>(lPackets));
    aState.SetBytesProcessed(static_cast<std::int64_t>(lPackets * aPackets[0].size()));
    aState.counters["allocations/packet"] =
        static_cast<double>(Allocations() - lBefore) / static_cast<double>(lPackets);
    aState.counters["samples"] = static_cast<double>(lSamples);
}

void InOrder(benchmark::State& aState) {
    Receive(aState, Fragments());
}
BENCHMARK(InOrder);

void SwappedPairs(benchmark::State& aState) {
    Receive(aState, Reordered(Fragments()));
}
BENCHMARK(SwappedPairs);

/// What the bytes alone cost: one copy into memory of its own for each packet, one into the unit.
void TwoCopies(benchmark::State& aState) {
    const std::vector<Bytes> lPackets = Fragments();
    for (auto lIteration : aState) {
        static_cast<void>(lIteration);
        for (std::size_t lFirst = 0; lFirst < lPackets.size(); lFirst += kPacketsPerUnit) {
            std::vector<Bytes> lHeld(lPackets.begin() + static_cast<std::ptrdiff_t>(lFirst),
                                     lPackets.begin() + static_cast<std::ptrdiff_t>(lFirst + kPacketsPerUnit));
            Bytes lUnit;
            lUnit.reserve(std::size_t{kPacketsPerUnit} * kPayload);
            for (const Bytes& lPacket : lHeld) {
                lUnit.insert(lUnit.end(), lPacket.begin() + 12, lPacket.end());
            }
            benchmark::DoNotOptimize(lUnit.data());
        }
    }
    aState.SetItemsProcessed(static_cast<std::int64_t>(lPackets.size()) * aState.iterations());
}
BENCHMARK(TwoCopies);

/// A queue of this many packets takes the next one: the time must not depend on the length.
void AppendToQueue(benchmark::State& aState) {
    const std::vector<Bytes> lPackets = Fragments();
    RTP::Stack lStack;
    lStack.SetTimeRes(90000);
    unsigned lSeq = 0;
    const auto lAppend = [&] {
        Bytes lPacket = lPackets[0];
        lPacket[2] = static_cast<Byte>(lSeq >> 8);
        lPacket[3] = static_cast<Byte>(lSeq);
        ++lSeq;
        lStack.HandleRTP(lPacket.data(), static_cast<UInt>(lPacket.size()), Time(0));
    };
    while (lSeq < static_cast<unsigned>(aState.range(0))) {
        lAppend();
    }
    for (auto lIteration : aState) {
        static_cast<void>(lIteration);
        lAppend();
        lStack.Pop();
    }
    aState.SetItemsProcessed(aState.iterations());
}
BENCHMARK(AppendToQueue)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);

}  // namespace

BENCHMARK_MAIN();
