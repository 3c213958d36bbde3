// Headers that ask who the client is: an answer is one whole header line, and shows no password.

#include "MediaSessions/RTSP/Authenticator.hpp"
#include "support/Target.hpp"

namespace Fuzz {

// An entry of one byte costs a challenge with its texts.
const Bounds kBounds{65536, 512};

namespace {

constexpr char kPassword[] = "\x01pass\x02word\x03";

void CheckAnswer(const std::string& aAnswer) {
    FUZZ_CHECK(std::string::npos == aAnswer.find_first_of(std::string("\r\n\0", 3)));
    FUZZ_CHECK(std::string::npos == aAnswer.find(kPassword));
    // What is quoted is closed again.
    std::size_t lQuotes = 0;
    for (std::size_t i = 0; i < aAnswer.size(); ++i) {
        if ('\\' == aAnswer[i]) {
            ++i;
        } else {
            lQuotes += '"' == aAnswer[i] ? 1U : 0U;
        }
    }
    FUZZ_CHECK(0 == lQuotes % 2);
}

}  // namespace

void Run(Input& aInput) {
    const std::string lName = AsText(aInput.Chunk());
    Player::MediaSessions::Authenticator lAuthenticator;
    lAuthenticator.SetCredentials({lName, kPassword});
    for (Player::UInt lTries = 0; lTries < 3; ++lTries) {
        const std::vector<std::string> lHeaders = {AsText(aInput.Chunk()), AsText(aInput.Chunk())};
        const bool lAccepted = lAuthenticator.Accept(lHeaders, lTries);
        FUZZ_CHECK(lTries < 2 || !lAccepted);
        const std::string lAnswer = lAuthenticator.Answer("PLAY", "rtsp://h/clip");
        FUZZ_CHECK(lAuthenticator.IsArmed() == !lAnswer.empty());
        CheckAnswer(lAnswer);
    }
}

}  // namespace Fuzz
