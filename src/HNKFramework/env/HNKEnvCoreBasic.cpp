#include "HNKEnvCoreBasic.h"

HNKEnvCoreBasic::~HNKEnvCoreBasic() {}
