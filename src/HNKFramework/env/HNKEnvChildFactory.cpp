#include "HNKEnvChildFactory.h"

HNKEnvChildFactory::~HNKEnvChildFactory() {}
