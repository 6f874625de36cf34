// Built with -fgnu-unique: the static below becomes an STB_GNU_UNIQUE symbol.
inline int& hnkUniqueCanaryCounter()
{
    static int counter = 0;
    return counter;
}

int hnkUniqueCanaryTouch() { return ++hnkUniqueCanaryCounter(); }
