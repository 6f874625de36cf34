#include "HNKEnvAccessor.h"

bool HNKEnvAccessor::isLocal(const HNKEID& eid) const { return local_.count(eid) != 0; }

void HNKEnvAccessor::addLocal(const HNKEID& eid) { local_.insert(eid); }

void HNKEnvAccessor::removeLocal(const HNKEID& eid) { local_.erase(eid); }
