// Every construct that the generator supports, decoded and printed by its own code: the module
// generator/Zoo.asn.

#include "ZooNames.h"
#include "zoo_cases.h"

extern const AsnTypeInfo kZooTypes[];
extern const size_t kZooTypeCount;

namespace {

const ZooCase kValues[] = {
    {"Flag", "1", "=", 0, "= TRUE"},
    {"Constant", "", "=", 0, "= 5"},
    {"Bit", "1", "=", 0, "= 1"},
    {"Below_octet", "[FE]", "=", 0, "= 254"},
    {"Octet", "[FF]", "=", 0, "= 255"},
    {"Above_octet", "1 [00]", "[01 00]", 0, "= 256"},
    {"Two_octets", "[FF FE]", "=", 0, "= 65534"},
    {"Above_two_octets", "1 [00 00]", "10 000000 [01 00 00]", 0, "= 65536"},
    {"Signed", "1010", "=", 0, "= 5"},
    {"All_signed", "[7F FF FF FF]", "=", 0, "= -1"},
    {"All_unsigned", "[FF FF FF FE]", "11 000000 [FF FF FF FE]", 0, "= 4294967294"},
    {"Unbounded", "[01 FF]", "=", 0, "= -1"},
    {"Extensible", "0 111", "=", 0, "= 8"},
    {"Extensible", "1 [01 09]", "1 0000000 [01 09]", 0, "= 9"},
    {"From_one", "[01 00]", "=", 0, "= 1"},
    {"From_one", "[02 01 00]", "=", 0, "= 257"},
    {"From_one", "[08 7F FF FF FF FF FF FF FE]", "=", 0, "= 9223372036854775807"},
    {"From_one", "[08 7F FF FF FF FF FF FF FF]", "=", -24, ""},
    {"Three_items", "10", "=", 0, "= 2"},
    {"Three_items", "11", "=", -23, ""},
    {"Open_items", "0 1", "=", 0, "= 1"},
    {"Open_items", "1 0000000", "=", 0, "= 2"},
    {"Open_items", "1 0000101", "=", 0, "= 7"},  // of a later version
    {"Other_name", "[07]", "=", 0, "= 7"},
    {"Other_list", "[02] 10", "=", 0, ".n = 2; .elem[0] = TRUE; .elem[1] = FALSE"},
    {"Octets", "[02 41 42]", "=", 0, ".numocts = 2; .data =; 41 42 AB"},
    {"Octets_2", "[41 42]", "=", 0, ".numocts = 2; .data =; 41 42 AB"},
    {"Octets_3", "[41 42 43]", "=", 0, ".numocts = 3; .data =; 41 42 43 ABC"},
    {"Octets_1_to_4", "00 [41]", "00 000000 [41]", 0, ".numocts = 1; .data =; 41 A"},
    {"Octets_large", "000 [01 41]", "[00 01 41]", 0, ".numocts = 1; .data =; 41 A"},
    {"Bits", "[09 A5] 1", "=", 0, ".numbits = 9; .data =; a5 80 .."},
    {"Bits_16", "[41 42]", "=", 0, ".numbits = 16; .data =; 41 42 AB"},
    {"Bits_17", "[41 42] 0", "=", 0, ".numbits = 17; .data =; 41 42 00 AB."},
    {"Bits_0_to_9", "0001 1", "0001 0000 1", 0, ".numbits = 1; .data =; 80 ."},
    {"Identifier", "[03 2B 06 01]", "=", 0, "= {; 1 3 6 1 }"},
    {"Open", "[02 41 42]", "=", 0, ".numocts = 2; .data =; 41 42 AB"},
    {"Numeric", "[04] 0010 0011 0000 0100", "=", 0, "= '12 3'"},
    {"Printable", "1 1000001 1000010", "1 0000000 [41 42]", 0, "= 'AB'"},
    {"Visible", "1000001 1111110", "[41 7E]", 0, "= 'A~'"},
    {"Ia5", "[01] 1100001", "[01 61]", 0, "= 'a'"},
    {"General", "[01] 1100001", nullptr, -23, ""},
    {"General", nullptr, "[01 61]", 0, "= 'a'"},
    {"Bmp", "0 [00 41]", "0 0000000 [00 41]", 0, ".nchars = 1; .data =; 41 00 A."},
    {"Two_digits", "01 00", "=", 0, "= '21'"},
    {"Two_digits", "01 10", "=", -23, ""},
    {"Escaped", "[03] 10 01 00", "=", 0, "= '\\\"!'"},
};

const ZooCase kSequences[] = {
    {"Empty", "", "=", 0, ""},
    {"Nulls", "", "=", 0, ""},
    {"Null_flag", "1", "=", 0, ".m@aPresent = 1"},
    {"Null_flag", "", "=", 0, ".m@aPresent = 0"},
    {"Plain", "101 1", "=", 0, ".a = 5; .b = TRUE"},
    {"First_optional", "1 1 0", "=", 0, ".m@aPresent = 1; .a = 1; .b = 0"},
    {"First_optional", "0 1", "=", 0, ".m@aPresent = 0; .b = 1"},
    {"First_optional", "", "=", -2, ""},
    {"Last_optional", "10 1 0", "=", 0, ".m@bPresent = 1; .m@cPresent = 0; .a = 1; .b = 0"},
    {"Last_optional", "01 1 0 1000001", "01 1 0 0000 [41]", 0,
     ".m@bPresent = 0; .m@cPresent = 1; .a = 1; .c = 'A'"},
    {"Marked", "0 1", "=", 0, ".a = 1; .extElem1.numocts = 0; .extElem1.data ="},
    {"Marked", "1 1 0000000 1 [01 FF]", nullptr, 0,
     ".a = 1; .extElem1.numocts = 3; .extElem1.data =; c0 40 7f .@."},
    {"Marked", nullptr, "1 1 0000000 1 000000 [01 FF]", 0,
     ".a = 1; .extElem1.numocts = 4; .extElem1.data =; c0 40 01 ff .@.."},
    {"Only_marked", "0", "=", 0, ".extElem1.numocts = 0; .extElem1.data ="},
    {"Additions", "0 1", "=", 0, ".m@bPresent = 0; .m@cPresent = 0; .m@dPresent = 0; .a = 1"},
    // the fifth addition is not known
    {"Additions", "1 1 0000100 11101 [01 80] [01 00] [01 40] [01 00]",
     "1 1 0000100 11101 00 [01 80] [01 00] [01 40] [01 00]", 0,
     ".m@bPresent = 1; .m@cPresent = 1; .m@dPresent = 1; .a = 1; .b = 1; .d.e = 1; "
     ".d.extElem1.numocts = 0; .d.extElem1.data ="},
    {"Additions", "1 1 0000100 10001 [00] [01 00]", "1 1 0000100 10001 00 [00] [01 00]", -2, ""},
    {"Additions", "1 1 1 [04] 00000 [FF FF FF FF]", "1 1 1 00000 [04 FF FF FF FF]", -2, ""},
    {"Only_additions", "0", "=", 0, ".m@aPresent = 0; .m@bPresent = 0"},
    {"Only_additions", "1 0000001 11 [02 10 40] [01 42]",
     "1 0000001 11 000000 [02 00 41] [02 00 42]", 0,
     ".m@aPresent = 1; .m@bPresent = 1; .a.numocts = 1; .a.data =; 41 A; .b = 'B'"},
    {"Both_sides", "1 11 1 [07] 0000001 01 [01 C0]", "1 11 1 0000 [07] 0000001 01 0000000 [01 C0]",
     0,
     ".m@aPresent = 1; .m@cPresent = 1; .m@dPresent = 0; .m@ePresent = 1; .a = TRUE; .b = 7; "
     ".e.t = 2; .e.u@flag = TRUE"},
    {"Flags_32", "[80 00 00 01] 1 0", "=", 0,
     ".m@f1Present = 1; .m@f2Present = 0;...; .m@f31Present = 0; .m@f32Present = 1; .f1 = 1; "
     ".f32 = 0"},
    {"Flags_31_marked", "0 [80 00 00] 0000001 1", "=", 0,
     ".m@f1Present = 1; .m@f2Present = 0;...; .m@f30Present = 0; .m@f31Present = 1; .f31 = 1; "
     ".extElem1.numocts = 0; .extElem1.data ="},
    {"Flags_32_marked", "0 [80 00 00 01] 1", "=", 0,
     ".m@f1Present = 1; .m@f2Present = 0;...; .m@f31Present = 0; .m@f32Present = 1; .f32 = 1; "
     ".extElem1.numocts = 0; .extElem1.data ="},
    {"Flags_33", "1 1 1 0011111 [00 00 00 01] [01 80]",
     "1 1 1 0011111 [00 00 00 01] 000000 [01 80]", 0,
     ".m@f1Present = 1; .m@f2Present = 0;...; .m@f33Present = 1; .f1 = 1; .f33 = 1"},
    {"Nested", "1 [01] 0 1 00000000001 [41] 1 10 0010",
     "1 0000000 [01] 0 1 000000 [00 01] [41] 1 10 00000 0010", 0,
     ".a.m@bPresent = 1; .a.b.n = 1; .a.b.elem[0].c = 1; .a.b.elem[0].extElem1.numocts = 0; "
     ".a.b.elem[0].extElem1.data =; .d.numocts = 1; .d.data =; 41 A; .e.m@namePresent = 1; "
     ".e.keys = 2; .e.name = '1'"},
    {"Word_members", "1 1 0 1", "=", 0,
     ".m@int32-tPresent = 1; .class = 1; .int32-t = 0; .not-eq = TRUE"},
};

const ZooCase kChoices[] = {
    {"Single", "1", "=", 0, ".t = 1; .u@only = 1"},
    {"Pair", "0", "=", 0, ".t = 1"},
    {"Pair", "1 1", "=", 0, ".t = 2; .u@flag = TRUE"},
    {"Three_nulls", "10", "=", 0, ".t = 3"},
    {"Three_nulls", "11", "=", -11, ""},
    {"Values", "0000 [FF]", "0000 0000 [FF]", 0, ".t = 1; .u@a = 255"},
    {"Values", "0001 [00 00 00 01]", "0001 00 00 [01]", 0, ".t = 2; .u@b = 1"},
    {"Values", "0010 0 1000001", "0010 0 000 [41]", 0, ".t = 3; .u@c = 'A'"},
    {"Values", "0011 [00 41]", "0011 0000 [00 41]", 0,
     ".t = 4; .u@d.nchars = 1; .u@d.data =; 41 00 A."},
    {"Values", "0100 [01 41]", "0100 0000 [01 41]", 0,
     ".t = 5; .u@e.numocts = 1; .u@e.data =; 41 A"},
    {"Values", "0101 [41 42]", "=", 0, ".t = 6; .u@f.numocts = 2; .u@f.data =; 41 42 AB"},
    {"Values", "0110 [02] 10", "0110 0000 [02] 10", 0,
     ".t = 7; .u@g.numbits = 2; .u@g.data =; 80 ."},
    {"Values", "0111 [01 2B]", "0111 0000 [01 2B]", 0, ".t = 8; .u@h = {; 1 3 }"},
    {"Values", "1000 [01 41]", "1000 0000 [01 41]", 0,
     ".t = 9; .u@i.numocts = 1; .u@i.data =; 41 A"},
    {"Values", "1001 1", "=", 0, ".t = 10; .u@j.k = 1"},
    {"Values", "1010 [02] 10", "1010 0000 [02] 10", 0,
     ".t = 11; .u@l.n = 2; .u@l.elem[0] = 1; .u@l.elem[1] = 0"},
    {"Values", "1011 0 1", "=", 0, ".t = 12; .u@o.t = 1; .u@o.u@p = 1"},
    {"Values", "1100", "=", -11, ""},
    {"Marked_choice", "0 1 1", "=", 0, ".t = 2; .u@b = 1"},
    {"Marked_choice", "1 0000000 [01 FF]", "=", 0, ".t = 0"},
    {"Marked_choice", "1 0000000", "=", -2, ""},
    {"Marked_nulls", "0 1", "=", 0, ".t = 2"},
    {"Marked_nulls", "1 0000000 [01 FF]", "=", 0, ".t = 0"},
    {"Known", "0 1 1", "=", 0, ".t = 2; .u@b = 1"},
    {"Known", "1 0000000 [01 80]", "=", 0, ".t = 3; .u@c = 1"},
    {"Known", "1 0000001 [01 00]", "=", 0, ".t = 4"},
    {"Known", "1 0000000 [C0 01 80]", "=", 0, ".t = 3; .u@c = 1"},  // in two fragments
    {"Known", "1 0000010 [02 10 40]", "1 0000010 [02 00 41]", 0,
     ".t = 5; .u@e.numocts = 1; .u@e.data =; 41 A"},
    {"Known", "1 0000011 [01 00]", "=", -11, ""},
    {"Known", "1 0000000 [00]", "=", -2, ""},
    {"Known", "1 0000001 [00]", "=", 0, ".t = 4"},
    // an index so large that adding the root alternatives wraps
    {"Known", "1 1 [04] 000000 [FF FF FF FE 01 00]", "1 1 000000 [04 FF FF FF FE 01 00]", -11, ""},
    {"Known_nulls", "0", "=", 0, ".t = 1"},
    {"Known_nulls", "1 0000000 [01 00]", "=", 0, ".t = 2"},
    {"Choice_255", "[FE] 1", "=", 0, ".t = 255; .u@a255 = 1"},
    {"Choice_255", "[FF] 1", "=", -11, ""},
    {"Choice_256", "[FF] 1", "=", 0, ".t = 256; .u@a256 = 1"},
    {"Words", "0000001", "=", 0, ".t = 2"},
};

const ZooCase kLists[] = {
    {"List", "[08 FE]", "=", 0, ".n = 8; .elem[0] = TRUE;...; .elem[7] = FALSE"},
    {"List", "[09 FE]", "=", -2, ""},
    {"List", "[00]", "=", 0, ".n = 0"},
    {"List", "[C1 FF]", "=", 2, ""},
    {"List_2", "[07 08]", "=", 0, ".n = 2; .elem[0] = 7; .elem[1] = 8"},
    {"List_1_to_4", "01 0 1000001 0 1000010", "01 0 00000 [41] 0 0000000 [42]", 0,
     ".n = 2; .elem[0] = 'A'; .elem[1] = 'B'"},
    {"List_long", "[01 FF FF]", "=", 0, ".n = 1; .elem[0] = 65535"},
    {"List_long", "[02 FF FF]", "=", -2, ""},
    {"List_of_lists", "[01] 0 0 01", "=", 0,
     ".n = 1; .elem[0].n = 1; .elem[0].elem[0].m@namePresent = 0; .elem[0].elem[0].keys = 1"},
    {"List_of_octets", "[02] [41 42] [43 44]", "=", 0,
     ".n = 2; .elem[0].numocts = 2; .elem[0].data =; 41 42 AB; .elem[1].numocts = 2; "
     ".elem[1].data =; 43 44 CD"},
    {"List_of_large", "[01] 0 [00 01]", "[01] 00 000000 [01]", 0, ".n = 1; .elem[0] = 1"},
    {"List_of_large", "[01] [00 00]", "[01] [00]", -2, ""},
    // eight elements in 17 bits each
    {"List_of_extensible",
     "[08] 1[01 05] 1[01 05] 1[01 05] 1[01 05] 1[01 05] 1[01 05] 1[01 05] 1[01 05]", nullptr, 0,
     ".n = 8; .elem[0] = 5;...; .elem[7] = 5"},
    {"List_of_extensible", nullptr, "[01] 1 0000000 [01 05]", 0, ".n = 1; .elem[0] = 5"},
    {"List_of_digits", "[02] 0001 0100", "[02] 0001 0000 0100", 0,
     ".n = 2; .elem[0] = '12'; .elem[1] = '21'"},
    {"List_of_digits", "[03] 0001 0100", "=", -2, ""},
    {"List_of_choices", "[01] 0 0 [07]", "[01] 0 0 000000 [07]", 0,
     ".n = 1; .elem[0].t = 1; .elem[0].u@a = 7"},
    {"List_of_choices", "[02] 1 0000000 [01 FF] 0 0 [07]", "[02] 1 0000000 [01 FF] 0 0 000000 [07]",
     0, ".n = 2; .elem[0].t = 3; .elem[1].t = 1; .elem[1].u@a = 7"},
    {"List_of_choices", "[02] 0 0 [07]", "=", -2, ""},
    {"Tree", "1 1 [01] 0 0", "1 1 000000 [01] 0 0", 0,
     ".m@childrenPresent = 1; .value = 1; .children.n = 1; "
     ".children.elem[0].m@childrenPresent = 0; .children.elem[0].value = 0"},
    {"Chain", "1 1 0", "=", 0, ".t = 2; .u@next.t = 2; .u@next.u@next.t = 1"},
    {"Chain", "[FF FF FF FF FF FF FF FE]", "=", 0, ".t = 2;....t = 1"},
    {"Chain", "[FF FF FF FF FF FF FF FF] 0", "=", -22, ""},
    {"Ping", "1 1 0", "=", 0, ".t = 2; .u@pong.a = 1; .u@pong.ping.t = 1"},
};

const ZooTable kZoo{"Zoo", kZooTypes, kZooTypeCount, true};

TEST(Zoo, Values) {
    checkAll(kZoo, kValues);
}
TEST(Zoo, Sequences) {
    checkAll(kZoo, kSequences);
}
TEST(Zoo, Choices) {
    checkAll(kZoo, kChoices);
}
TEST(Zoo, Lists) {
    checkAll(kZoo, kLists);
}

TEST(Zoo, NamesOfAlternatives) {
    ZooKnown value{};
    for (const std::string_view name : {"", "a", "b", "c", "d", "e", ""}) {
        EXPECT_EQ(asnAlternativeName(value), name);
        ++value.t;
    }
    EXPECT_EQ(AsnNames<ZooWords>::all[0], "alignas");
}

}  // namespace
