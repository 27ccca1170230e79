#pragma once

// What the benchmarks share: their clock, and the large purchase order that
// the binding, JSON and Fast Infoset benchmarks read and write.

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace MxBench
{

// This thread's CPU time in seconds: other work on a shared machine does not
// count against the code measured.
// A figure of /proc/self/status (VmRSS, VmHWM, ...), in bytes; 0 where there is none.
inline std::size_t StatusBytes(char const *field)
{
    FILE *status = std::fopen("/proc/self/status", "r");
    if (status == nullptr)
        return 0;
    char line[256];
    std::size_t kb = 0;
    std::size_t const length = std::strlen(field);
    while (std::fgets(line, sizeof line, status))
        if (std::strncmp(line, field, length) == 0 && line[length] == ':')
            kb = std::strtoul(line + length + 1, nullptr, 10);
    std::fclose(status);
    return kb * 1024;
}

inline double CpuNow()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// A purchase order of the example schema, one item after another until the
// text reaches `targetBytes`; every third item has a comment, and the items
// alternate between a ship date and a pickup.
inline std::string MakePurchaseOrder(std::size_t targetBytes)
{
    std::string xml = "<?xml version=\"1.0\"?>\n"
                      "<po:purchaseOrder xmlns:po=\"urn:example:po\" orderDate=\"2026-11-22\" status=\"open\">\n"
                      "\t<po:shipTo country=\"US\">\n\t\t<po:name>Alice Smith</po:name>\n"
                      "\t\t<po:street>123 Maple Street</po:street>\n\t\t<po:city>Mill Valley</po:city>\n"
                      "\t\t<po:state>CA</po:state>\n\t\t<po:zip>90952</po:zip>\n\t</po:shipTo>\n"
                      "\t<po:comment>Generated &amp; large</po:comment>\n\t<po:items>\n";
    for (unsigned n = 0; xml.size() < targetBytes; ++n)
    {
        std::string const id = std::to_string(n);
        xml += "\t\t<po:item partNum=\"" + std::to_string(100 + n % 900) + "-AA\">\n"
               "\t\t\t<po:productName>Lawnmower &amp; catcher " + id + "</po:productName>\n"
               "\t\t\t<po:quantity>" + std::to_string(1 + n % 99) + "</po:quantity>\n"
               "\t\t\t<po:USPrice>148.95</po:USPrice>\n";
        if (n % 3 == 0)
            xml += "\t\t\t<po:comment>Confirm this is electric</po:comment>\n";
        xml += n % 2 ? "\t\t\t<po:shipDate>2026-12-01</po:shipDate>\n" : "\t\t\t<po:pickup>Store 12</po:pickup>\n";
        xml += "\t\t</po:item>\n";
    }
    xml += "\t</po:items>\n</po:purchaseOrder>\n";
    return xml;
}

} // namespace MxBench
