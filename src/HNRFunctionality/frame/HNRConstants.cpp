#include "frame/HNRConstants.h"
