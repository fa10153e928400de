// What differs from the zoo's other tests in a set that is decoded as published, by X.691
// (07/2002).

#include "zoo_cases.h"

namespace published {
extern const AsnTypeInfo kZooTypes[];
extern const size_t kZooTypeCount;
}  // namespace published

namespace {

const ZooTable kPublishedZoo{"published::Zoo", published::kZooTypes, published::kZooTypeCount,
                             false};

const ZooCase kFlags[] = {
    // 18.1, 18.2, 22.5: no bit may be missing at the end of the data
    {"Null_flag", "", "=", -2, ""},
    {"Only_marked", "", "=", -2, ""},
    {"Last_optional", "1", "=", 0, ".m@bPresent = 1; .m@cPresent = 0; .a = 0; .b = 0"},
    {"Known", "", "=", -2, ""},
    {"Additions", "1 1 0001000 [FF]", "=", -2, ""},  // a bitmap of nine bits
    {"Flags_33", "1 1 1 0011111 [00 00 00 01] [01 80]",
     "1 1 1 0011111 [00 00 00 01] 000000 [01 80]", 0,
     ".m@f1Present = 1; .m@f2Present = 0;...; .m@f33Present = 1; .f1 = 1; .f33 = 1"},
};

const ZooCase kUnknown[] = {
    // 18.7 to 18.9: additions are kept, each with its place after the known ones
    {"Marked", "0 1", "=", 0, ".a = 1"},
    {"Marked", "1 1 0000000 1 [01 FF]", "1 1 0000000 1 000000 [01 FF]", 0,
     ".a = 1; .extElem1.numocts = 1; .extElem1.data =; ff ."},
    {"Marked", "1 1 0000010 011 [01 AA] [00]", "1 1 0000010 011 0000 [01 AA] [00]", 0,
     ".a = 1; .extElem2.numocts = 1; .extElem2.data =; aa .; .extElem3.numocts = 0; "
     ".extElem3.data ="},
    {"Marked", "1 1 0000001 11 [01 AA]", "1 1 0000001 11 00000 [01 AA]", -2, ""},
    {"Additions", "1 1 0000100 11101 [01 80] [01 00] [01 40] [01 05]",
     "1 1 0000100 11101 00 [01 80] [01 00] [01 40] [01 05]", 0,
     ".m@bPresent = 1; .m@cPresent = 1; .m@dPresent = 1; .a = 1; .b = 1; .d.e = 1; "
     ".extElem2.numocts = 1; .extElem2.data =; 05 ."},
    // 10.9.3.4: more than 64 bits of a bitmap have a length of their own
    {"Marked", "1 1 1 [41] [00 00 00 00 00 00 00 00] 1 [01 AA]",
     "1 1 1 00000 [41] [00 00 00 00 00 00 00 00] 1 0000000 [01 AA]", 0,
     ".a = 1; .extElem65.numocts = 1; .extElem65.data =; aa ."},
    {"Marked", "1 1 1 [00]", "1 1 1 00000 [00]", -5, ""},
    // 22.8: alternatives are kept, too; their index continues the tags
    {"Marked_choice", "1 0000101 [02 AA BB]", "=", 0,
     ".t = 8; .u@extElem1.numocts = 2; .u@extElem1.data =; aa bb .."},
    {"Marked_nulls", "1 0000000 [01 FF]", "=", 0,
     ".t = 3; .u@extElem1.numocts = 1; .u@extElem1.data =; ff ."},
    {"Known", "1 0000011 [01 00]", "=", 0,
     ".t = 6; .u@extElem1.numocts = 1; .u@extElem1.data =; 00 ."},
    {"Known", "1 0000001 [01 00]", "=", 0, ".t = 4"},
    {"Known", "1 0000000 [00]", "=", -2, ""},
    {"Known", "1 0000011 [02 00]", "=", -2, ""},
    {"Known", "1 1 [01 40] [01 FF]", "1 1 000000 [01 40] [01 FF]", 0,
     ".t = 67; .u@extElem1.numocts = 1; .u@extElem1.data =; ff ."},
    {"Known", "1 1 [04 FF FF FF FF] [00]", "1 1 000000 [04 FF FF FF FF] [00]", 0,
     ".t = 1073741826; .u@extElem1.numocts = 0; .u@extElem1.data ="},
    {"Known", "1 1 [05 00 00 00 00 00] [00]", "1 1 000000 [05 00 00 00 00 00] [00]", -5, ""},
    // an open type at any bit where UNALIGNED
    {"List_of_choices", "[02] 0 0 [07] 1 0000000 [01 FF]", "[02] 0 0 000000 [07] 1 0000000 [01 FF]",
     0, ".n = 2; .elem[0].t = 1; .elem[0].u@a = 7; .elem[1].t = 3"},
};

const ZooCase kStrings[] = {
    // 27.5.2: 2^n characters take n bits
    {"Two_digits", "10", "=", 0, "= '21'"},
    {"Sixteen_digits", "0001 1111", "=", 0, "= '1F'"},
    {"Escaped", "[03] 10 01 00", "=", 0, "= '\\\"!'"},
    // 27.5.6, 27.5.7: short texts are not aligned, those that vary only below 16 bits
    {"Short_text", "10 0010 0011", "=", 0, "= '12'"},
    {"Short_text", "00", "=", 0, "= ''"},
    {"Printable", "1 1000001 1000010", "1 0000000 [41 42]", 0, "= 'AB'"},
    {"Values", "0011 [00 41]", "=", 0, ".t = 4; .u@d.nchars = 1; .u@d.data =; 41 00 A."},
    {"Values", "0010 0 1000001", "0010 0 000 [41]", 0, ".t = 3; .u@c = 'A'"},
    // the whole of IA5String
    {"Ia5", "[01] 1111110", "[01 7E]", 0, "= '~'"},
    // 27.6
    {"General", "[02 61 7E]", "=", 0, "= 'a~'"},
    {"General", "[00]", "=", 0, "= ''"},
};

const ZooCase kNumbers[] = {
    {"Unbounded", "[01 FF]", "=", 0, "= -1"},
    {"Unbounded", "[05 01 00 00 00 00]", "=", 0, "= 4294967296"},
    {"Unbounded", "[09 FF 80 00 00 00 00 00 00 00]", "=", 0, "= -9223372036854775808"},
    {"Unbounded", "[09 00 80 00 00 00 00 00 00 00]", "=", -24, ""},
    {"Extensible", "1 [05 01 00 00 00 00]", "1 0000000 [05 01 00 00 00 00]", 0, "= 4294967296"},
    {"All_signed", "[7F FF FF FF]", "11 000000 [7F FF FF FF]", 0, "= -1"},
};

const ZooCase kPublishedLists[] = {
    {"List", "[02] 10", "=", 0, ".n = 2; .elem[0] = TRUE; .elem[1] = FALSE"},
    {"List", "[C1 FF]", "=", -2, ""},
    {"List_2", "[07 08]", "=", 0, ".n = 2; .elem[0] = 7; .elem[1] = 8"},
};

TEST(Published, Flags) {
    checkAll(kPublishedZoo, kFlags);
}
TEST(Published, UnknownContentIsKept) {
    checkAll(kPublishedZoo, kUnknown);
}
TEST(Published, Strings) {
    checkAll(kPublishedZoo, kStrings);
}
TEST(Published, Numbers) {
    checkAll(kPublishedZoo, kNumbers);
}
TEST(Published, Lists) {
    checkAll(kPublishedZoo, kPublishedLists);
}

TEST(Published, FragmentsOfListsAndTexts) {
    // 16384 items, 16384 more, and one (10.9.3.8)
    const Octets items(2048, 0xAA);
    for (const bool aligned : {false, true}) {
        Octets list{0xC1};
        list.insert(list.end(), items.begin(), items.end());
        list.push_back(0xC1);
        list.insert(list.end(), items.begin(), items.end());
        list.insert(list.end(), {0x01, 0x80});
        const std::string dump = decoded(kPublishedZoo["List"], list, aligned, false).dump;
        EXPECT_TRUE(matches(dump,
                            ".n = 32769; .elem[0] = TRUE;...; .elem[32767] = FALSE; "
                            ".elem[32768] = TRUE"));
        list.erase(list.end() - 2, list.end());
        EXPECT_EQ(decoded(kPublishedZoo["List"], list, aligned, false).status, kAsnEndOfData);
        const std::string digits(16384, '1');
        Octets text{0xC1};
        text.insert(text.end(), 8192, 0x22);
        text.insert(text.end(), {0x01, 0x20});
        EXPECT_EQ(decoded(kPublishedZoo["Numeric"], text, aligned, false).dump,
                  "= '" + digits + "1'");
    }
}

}  // namespace
