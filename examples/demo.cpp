#include "MxXmlLib.h"

#include <cstdio>

int main()
{
    std::printf("MxXmlLib demonstration\n");
    return 0;
}
