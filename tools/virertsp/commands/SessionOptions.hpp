#pragma once

#include <glib.h>

#include <string>
#include <vector>

#include "Failure.hpp"
#include "commands/Configuration.hpp"
#include "commands/ProbePlayer.hpp"

namespace Virertsp {

/// Text that GLib's parser allocates.
struct OptionText {
    OptionText() = default;
    OptionText(const OptionText&) = delete;
    OptionText& operator=(const OptionText&) = delete;
    ~OptionText() { g_free(mText); }

    std::string Value() const { return nullptr == mText ? "" : mText; }

    gchar* mText = nullptr;
};

/// What a command takes after its options.
enum class Operands { kURL, kURLs, kURLOrFile };

/// What every command that opens a session lets its user say.
class SessionOptions {
public:
    SessionOptions() = default;
    SessionOptions(const SessionOptions&) = delete;
    SessionOptions& operator=(const SessionOptions&) = delete;
    ~SessionOptions();

    /// Reads the command line with the command's own entries (ended by an empty one) beside the common ones.
    /// Throws `Failure`. False when help, or candidates for a shell, were asked for and printed.
    bool Parse(int aCount, char** aArguments, const char* aSummary, const GOptionEntry* aEntries,
               Operands aOperands = Operands::kURL);

    /// At least one.
    const std::vector<std::string>& Given() const { return mGiven; }
    /// Whether the first is the name of a file and no location.
    bool IsFile() const;
    /// The first location without a user and a password, to show it.
    std::string URL() const { return WithoutUser(mGiven.front()); }
    static std::string WithoutUser(const std::string& aURL);
    bool Verbose() const { return FALSE != mVerbose; }

    /// Plays the location. The library's messages are silenced unless they were asked for.
    /// Throws `Failure`, also when no track can be played.
    void Open(ProbePlayer& aPlayer) const;
    /// Throws `Failure` for settings that no session takes.
    void Check() const;
    /// Plays this location; several threads may do so, each with a player of its own. Throws as `Open` does.
    void Play(ProbePlayer& aPlayer, const std::string& aURL) const;

private:
    void TakeOperands(int aCount, char** aArguments, Operands aOperands);
    Failure WithAdvice(const Failure& aFailure, const Player::Exception& aException, bool aHasUser) const;

    Values Settings() const;

    gboolean mTCP = FALSE;
    gboolean mClassic = FALSE;
    OptionText mTransport;
    OptionText mUser;
    OptionText mAuthorities;
    gboolean mVerbose = FALSE;
    gchar** mConfig = nullptr;
    std::string mPassword;
    std::vector<std::string> mGiven;
};

/// The value of a "--seconds" option, `aDefault` when it was not given. Throws `Failure` for what it can't say.
double Seconds(const OptionText& aGiven, double aDefault = 0);

/// Leaves the server, and waits up to two seconds for its answer, whatever that is.
void CloseQuietly(Player::MediaPlayer& aPlayer);

/// As `CloseQuietly`, but an interrupt ends the process within a second, with success.
void Leave(Player::MediaPlayer& aPlayer);

/// Leaves the server at its end, however that comes.
class Visit {
public:
    explicit Visit(Player::MediaPlayer& aPlayer) : mPlayer(aPlayer) {}
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
    ~Visit() { Leave(mPlayer); }

private:
    Player::MediaPlayer& mPlayer;
};

}  // namespace Virertsp
