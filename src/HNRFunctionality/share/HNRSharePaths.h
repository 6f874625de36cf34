#pragma once
// Internal to the share client (not installed): the canonical form of share
// paths and its parts, shared by the share client's sources and its tests.
// A canonical share path has the server at element 0 ("//srv"), the root at 1,
// the share name at 2 and the path inside the share from element 3 on.
#include <string>

#include <boost/filesystem/path.hpp>

namespace HNR {

// Backslashes become slashes, trailing separators go, repeated ones collapse.
// Empty (refused) when s is empty or holds nothing but separators.
boost::filesystem::path createCanonized(const std::string& s);
// True when server, root and share name are all present (more than 2 elements).
bool isCorrectShare(const boost::filesystem::path& path);
// The share itself: the first 3 elements.
boost::filesystem::path getShareFromPath(const boost::filesystem::path& path);
// The location inside the share (elements 3 onward); empty at the share root.
boost::filesystem::path getRelativeFromPath(const boost::filesystem::path& path);
// s with every slash turned into a backslash.
std::string toBackslashes(std::string s);
// The path's string with every slash turned into a backslash.
std::string getWinPathString(const boost::filesystem::path& path);
// DOM/user -> DOM\user (first slash only); user@DOM -> DOM\user unless a
// backslash is present.
void canonizeLogin(std::string& login);

} // namespace HNR
