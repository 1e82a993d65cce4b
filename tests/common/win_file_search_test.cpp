#include "common/exc/exc.h"
#include "common/runtime/search_or_warn.h"
#include "tests/support/process_env.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

using win::win_file_search_t;

namespace {

// The names a search finds, those of folders with a closing backslash.
std::set<std::wstring> names_found(const std::wstring& pattern) {
    std::set<std::wstring> names;
    for (win_file_search_t search = runtime::search_or_warn(pattern); search.found(); search.next())
        names.insert(search.current().name + (search.current().is_directory() ? L"\\" : L""));
    return names;
}

class FileSearch : public ::testing::Test {
protected:
    void SetUp() override {
        tree.add_file("vm1.vhdx", "12345");
        tree.add_file("VM1.AVHDX");
        tree.add_file("notes.txt");
        tree.add_file("README");
        tree.add_folder("Disks");
        tree.add_folder("snap.vhdx");
    }
    std::wstring in_tree(const wchar_t* mask) const { return tree.wide() + L"\\" + mask; }
    win_test::temp_tree_t tree;
};

struct mask_case_t {
    const wchar_t* mask;
    std::vector<std::wstring> matching;
    std::vector<std::wstring> not_matching;
};

// The Windows search's reading of masks, the DOS forms around dots included.
const mask_case_t mask_cases[] = {
    {L"*.vhdx", {L"A.VHDX"}, {}},
    {L"*.vhd", {L"a.b.vhd"}, {L"a.vhdx"}},
    {L"*.tar.gz", {L"x.tar.gz"}, {}},
    {L"*a*b*c", {L"xxaxxbxbxxc"}, {L"xxaxxbxbxxcx"}},
    {L"Mirrack_crash_*.dmp", {L"mirrack_crash_0007.DMP"}, {}},
    // A mask that would send a naive recursive matcher into exponential time.
    {L"*a*a*a*a*a*a*a*a*a*a*", {std::wstring(5000, L'a')}, {}},
    {L"*a*a*a*a*a*a*a*a*a*a*b", {}, {std::wstring(5000, L'a')}},
    // "?" is one character, or none before a dot or at the end of the name.
    {L"vm?.vhd", {L"VM1.vhd", L"vm.vhd"}, {L"vm12.vhd"}},
    {L"a?", {L"a", L"ab"}, {L"abc"}},
    {L"a?b", {}, {L"ab"}},
    {L"a?.txt", {L"a.txt"}, {}},
    {L"TEM?????.???", {L"TEMP.TXT", L"TEMPTEMP.TXT", L"TEMP"}, {}},
    // "*." takes the names without an extension.
    {L"*.", {L"README"}, {L"notes.txt", L"a.b"}},
    {L"log.", {L"log"}, {}},
    // A closing ".*" takes any extension or none.
    {L"*.*", {L"README", L"a.b.c", L".", L"..", L"x."}, {}},
    {L"log.*", {L"log", L"LOG.1"}, {L"logs"}},
};

} // namespace

TEST(FileMask, MatchesAsTheWindowsSearchDoesAndStaysQuickOnLongNamesAndManyStars) {
    for (const mask_case_t& c : mask_cases) {
        for (const std::wstring& name : c.matching)
            EXPECT_TRUE(win::mask_matches(c.mask, name))
                << std::filesystem::path(c.mask) << " " << std::filesystem::path(name);
        for (const std::wstring& name : c.not_matching)
            EXPECT_FALSE(win::mask_matches(c.mask, name))
                << std::filesystem::path(c.mask) << " " << std::filesystem::path(name);
    }
}

TEST_F(FileSearch, MasksMatchWithoutRegardToCaseAndEntriesTellFoldersSizesAndTimes) {
    EXPECT_EQ(names_found(in_tree(L"*.vhdx")), (std::set<std::wstring>{L"vm1.vhdx", L"snap.vhdx\\"}));
    EXPECT_EQ(names_found(in_tree(L"VM1.*")), (std::set<std::wstring>{L"vm1.vhdx", L"VM1.AVHDX"}));
    EXPECT_EQ(names_found(in_tree(L"?????.txt")), (std::set<std::wstring>{L"notes.txt"}));
    EXPECT_EQ(names_found(in_tree(L"disks")), (std::set<std::wstring>{L"Disks\\"}));
    const std::set<std::wstring> without_extension{L".\\", L"..\\", L"README", L"Disks\\"};
    // Wine reads "*." as "*" and lists every name, where Windows lists those without an extension.
    if (names_found(in_tree(L"*.")) != names_found(in_tree(L"*")) || test_env::simulated_host) {
        EXPECT_EQ(names_found(in_tree(L"*.")), without_extension);
    }
    EXPECT_EQ(names_found(in_tree(L"*.*")),
              (std::set<std::wstring>{L".\\", L"..\\", L"vm1.vhdx", L"VM1.AVHDX", L"notes.txt", L"README",
                                      L"Disks\\", L"snap.vhdx\\"}));
    // The dots come first, as the system lists them; closed with entries left, a search gives no more.
    win_file_search_t search(in_tree(L"*"));
    EXPECT_EQ(search.current().name, L".");
    search.close();
    EXPECT_FALSE(search.found());
    EXPECT_FALSE(search.next());
    win_file_search_t file(in_tree(L"vm1.vhdx"));
    EXPECT_EQ(file.current().size, 5u);
    EXPECT_GT(file.current().last_write_time, 116444736000000000ULL);
    EXPECT_FALSE(file.next());
    // Nothing there is an empty search, not a failure.
    for (const std::wstring& nothing : {in_tree(L"*.iso"), tree.wide("missing\\folder") + L"\\*",
                                        in_tree(L"notes.txt\\*"), std::wstring(L"Q:\\not\\mapped\\*")})
        EXPECT_TRUE(names_found(nothing).empty()) << std::filesystem::path(nothing);
    EXPECT_FALSE(win_file_search_t(in_tree(L"*.iso")).found());
}
