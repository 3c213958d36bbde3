#pragma once

#include <string>
#include <utility>

#include "Player/URL.hpp"

/// URLs as servers write them, resolved and taken apart by RFC 3986. Whatever the text, there is a result.
namespace Player::URL {

/// Whether the text is a URL by itself: a scheme, "://".
bool IsAbsolute(const std::string& aText);

/// The URL that `aReference` means where `aBase` is the base. A reference without a query of its own keeps that of the
/// base, and a base that ends in "/" is a folder wherever that slash stands, after a "?" too: cameras address their
/// channels by the query. "*" and the empty reference mean the base itself.
std::string Resolve(const std::string& aBase, const std::string& aReference);

/// The base of a description that was asked for at `aRequest`: the first of Content-Base and Content-Location that is
/// not empty, else the request's own. What lacks scheme or host gets the request's.
std::string BaseOf(const std::string& aRequest, const std::string& aContentBase, const std::string& aContentLocation);

/// `aBase`, one slash, `aReference`: what servers mean that join the two as texts.
std::string Append(const std::string& aBase, const std::string& aReference);

/// Name and password in front of the host, percent-decoded.
struct UserInfo {
    std::string mName;
    std::string mPassword;
    bool operator==(const UserInfo& aOther) const { return mName == aOther.mName && mPassword == aOther.mPassword; }
};
UserInfo UserInfoOf(const std::string& aURL);

/// Host, without the brackets of an IPv6 address, and port of an authority; user information does not count.
std::pair<std::string, std::string> HostAndPort(const std::string& aAuthority, const std::string& aDefaultPort);
/// The part after the authority.
std::string PathAndQuery(const std::string& aURL);
/// Lower case, without "://"; empty for a text that is no URL.
std::string Scheme(const std::string& aURL);

}  // namespace Player::URL
