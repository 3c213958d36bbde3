#include "writers/AvContainer.hpp"

#include <strings.h>

#include <cstring>

#include "CodecParameters.hpp"
#include "Failure.hpp"
#include "MediaInfo.hpp"
#include "writers/AvTrack.hpp"

extern "C" {
#include <libavformat/avformat.h>
}

namespace Virertsp {

namespace {

std::string ErrorText(int aResult) {
    char lText[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(aResult, lText, sizeof(lText));
    return lText;
}

void SetExtraData(AVCodecParameters& aParameters, const std::string& aData) {
    aParameters.extradata = static_cast<std::uint8_t*>(av_mallocz(aData.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (nullptr == aParameters.extradata) { throw std::bad_alloc(); }
    std::memcpy(aParameters.extradata, aData.data(), aData.size());
    aParameters.extradata_size = static_cast<int>(aData.size());
}

void AddLength(std::size_t aSize, std::string& aOut) {
    aOut += static_cast<char>(aSize >> 8 & 0xFF);
    aOut += static_cast<char>(aSize & 0xFF);
}

/// AVCDecoderConfigurationRecord (ISO/IEC 14496-15 section 5.2.4.1): NAL units have lengths of four bytes.
std::string AvcConfiguration(const Player::Properties& aTrack) {
    std::string lSequence;
    std::string lPictures;
    for (const std::string& lSet : ParameterSetsOf(aTrack)) {
        constexpr unsigned kSequenceSet = 7;
        if (lSet.size() > 3) { (kSequenceSet == (lSet[0] & 0x1F) && lSequence.empty() ? lSequence : lPictures) = lSet; }
    }
    if (lSequence.empty() || lPictures.empty()) {
        throw Failure(kExitNothingPlayable, "Its description has no parameter sets.");
    }
    std::string lRecord = "\x01" + lSequence.substr(1, 3) + "\xFF\xE1";
    AddLength(lSequence.size(), lRecord);
    lRecord += lSequence + "\x01";
    AddLength(lPictures.size(), lRecord);
    return lRecord + lPictures;
}

/// AudioSpecificConfig: object type (5 bits), rate index (4), channels (4), the rest zero. What extends it is found in
/// the stream.
std::string AudioConfiguration(const Parser::AudioConfig& aConfig) {
    const unsigned lBits =
        aConfig.mObjectType << 11 | Parser::RateIndex(aConfig.mRate) << 7 | aConfig.mChannelConfiguration << 3;
    return {static_cast<char>(lBits >> 8), static_cast<char>(lBits & 0xFF)};
}

void DescribeVideo(const Player::Properties& aTrack, bool aIsH264, AVCodecParameters& aParameters) {
    const MediaInfo lInfo = MediaInfo::Of(aTrack);
    aParameters.codec_type = AVMEDIA_TYPE_VIDEO;
    aParameters.codec_id = aIsH264 ? AV_CODEC_ID_H264 : AV_CODEC_ID_MPEG4;
    aParameters.width = static_cast<int>(lInfo.mWidth);
    aParameters.height = static_cast<int>(lInfo.mHeight);
    SetExtraData(aParameters, aIsH264 ? AvcConfiguration(aTrack) : FormatParametersOf(aTrack).Config());
}

void DescribeAudio(const Parser::AudioConfig& aConfig, AVCodecParameters& aParameters) {
    aParameters.codec_type = AVMEDIA_TYPE_AUDIO;
    aParameters.codec_id = AV_CODEC_ID_AAC;
    aParameters.sample_rate = static_cast<int>(aConfig.mRate);
    av_channel_layout_default(&aParameters.ch_layout, static_cast<int>(aConfig.Channels()));
    aParameters.frame_size = aConfig.mShortFrames ? 960 : 1024;
    SetExtraData(aParameters, AudioConfiguration(aConfig));
}

}  // namespace

AvContainer::AvContainer(const std::string& aPath, OutputFile::Existing aExisting, const Player::Time& aStart)
    : mPath(aPath), mStart(aStart) {
    OutputFile(aPath, aExisting).Close();
    av_log_set_level(AV_LOG_QUIET);
    Check(avformat_alloc_output_context2(&mContext, nullptr, nullptr, aPath.c_str()));
    Check(avio_open(&mContext->pb, aPath.c_str(), AVIO_FLAG_WRITE));
    mContext->flags |= AVFMT_FLAG_FLUSH_PACKETS;
}

AvContainer::~AvContainer() {
    if (nullptr == mContext) { return; }
    avio_closep(&mContext->pb);
    avformat_free_context(mContext);
}

std::unique_ptr<Writer> AvContainer::AddTrack(const Player::Properties& aTrack) {
    // A track that can't be written at all is refused with the reason that its own file would have.
    FileExtension(aTrack);
    const Coding lCoding = CodingOf(aTrack);
    const bool lIsH264 = Coding::kH264 == lCoding;
    if (0 == strcasecmp("AMR", aTrack.Get("Format").c_str())) {
        throw Failure(kExitNothingPlayable, "AMR can only be recorded to a directory, one file per track.");
    }
    if (lIsH264) { AvcConfiguration(aTrack); }
    AVStream* const lStream = avformat_new_stream(mContext, nullptr);
    if (nullptr == lStream) { throw std::bad_alloc(); }
    ++mOpenTracks;
    constexpr int kVideoRate = 90000;
    if (Coding::kSound != lCoding) {
        DescribeVideo(aTrack, lIsH264, *lStream->codecpar);
        lStream->time_base = {1, kVideoRate};
        return std::make_unique<AvTrack>(*this, lStream->index, kVideoRate, lCoding, 0);
    }
    const Parser::AudioConfig lConfig = AudioConfigOf(aTrack);
    DescribeAudio(lConfig, *lStream->codecpar);
    lStream->time_base = {1, static_cast<int>(lConfig.mRate)};
    return std::make_unique<AvTrack>(*this, lStream->index, static_cast<int>(lConfig.mRate), Coding::kSound,
                                     lConfig.mShortFrames ? 960 : 1024);
}

void AvContainer::WriteHeader() {
    mBegun = true;
    AVDictionary* lOptions = nullptr;
    av_dict_set(&lOptions, "movflags", "frag_keyframe+delay_moov+default_base_moof", 0);
    // Sound alone has no key frames to begin a fragment at.
    av_dict_set(&lOptions, "frag_duration", "2000000", 0);
    const int lResult = avformat_write_header(mContext, &lOptions);
    av_dict_free(&lOptions);
    Check(lResult);
}

void AvContainer::Write(AVPacket& aPacket, int aRate) {
    if (!mBegun) { WriteHeader(); }
    av_packet_rescale_ts(&aPacket, {1, aRate}, mContext->streams[aPacket.stream_index]->time_base);
    Check(av_interleaved_write_frame(mContext, &aPacket));
}

void AvContainer::FinishTrack() {
    if (0 != --mOpenTracks) { return; }
    if (!mBegun) { WriteHeader(); }
    Check(av_write_trailer(mContext));
    Check(avio_closep(&mContext->pb));
}

void AvContainer::Check(int aResult) const {
    if (aResult < 0) { throw Failure(kExitOutput, "Can't write " + mPath + ": " + ErrorText(aResult) + "."); }
}

}  // namespace Virertsp
