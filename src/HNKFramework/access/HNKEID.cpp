#include "HNKEID.h"

int HNKEID::compare(const HNKEID& other) const { return guid_.compare(other.guid_); }

std::string HNKEID::toString() const { return guid_.toString(); }

bool HNKEID::fromString(const std::string& text) { return guid_.fromString(text); }
