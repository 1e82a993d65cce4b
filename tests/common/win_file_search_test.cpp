#include "common/exc/exc.h"
#include "common/runtime/search_or_warn.h"
#include "tests/support/process_env.h"
#include "win_temp_tree.h"

#include <gtest/gtest.h>

#include <set>

using win::win_file_search_t;

namespace {

std::set<std::wstring> names_found(const std::wstring& pattern) {
    std::set<std::wstring> names;
    for (win_file_search_t search = runtime::search_or_warn(pattern); search.found(); search.next())
        names.insert(search.current().name);
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
    const wchar_t* name;
    bool matches;
};

// The Windows search's reading of masks, the DOS forms around dots included.
const mask_case_t mask_cases[] = {
    {L"*.vhdx", L"A.VHDX", true},
    {L"*.vhd", L"a.vhdx", false},
    {L"*.vhd", L"a.b.vhd", true},
    {L"*.tar.gz", L"x.tar.gz", true},
    {L"*a*b*c", L"xxaxxbxbxxc", true},
    {L"*a*b*c", L"xxaxxbxbxxcx", false},
    {L"Mirrack_crash_*.dmp", L"mirrack_crash_0007.DMP", true},
    // "?" is one character, or none before a dot or at the end of the name.
    {L"vm?.vhd", L"VM1.vhd", true},
    {L"vm?.vhd", L"vm.vhd", true},
    {L"vm?.vhd", L"vm12.vhd", false},
    {L"a?", L"a", true},
    {L"a?", L"ab", true},
    {L"a?", L"abc", false},
    {L"a?b", L"ab", false},
    {L"a?.txt", L"a.txt", true},
    {L"TEM?????.???", L"TEMP.TXT", true},
    {L"TEM?????.???", L"TEMPTEMP.TXT", true},
    {L"TEM?????.???", L"TEMP", true},
    // "*." takes the names without an extension.
    {L"*.", L"README", true},
    {L"*.", L"notes.txt", false},
    {L"*.", L"a.b", false},
    {L"log.", L"log", true},
    // A closing ".*" takes any extension or none.
    {L"*.*", L"README", true},
    {L"*.*", L"a.b.c", true},
    {L"*.*", L".", true},
    {L"*.*", L"..", true},
    {L"*.*", L"x.", true},
    {L"log.*", L"log", true},
    {L"log.*", L"LOG.1", true},
    {L"log.*", L"logs", false},
};

} // namespace

TEST(FileMask, MatchesAsTheWindowsSearchDoesAndStaysQuickOnLongNamesAndManyStars) {
    for (const mask_case_t& c : mask_cases)
        EXPECT_EQ(win::mask_matches(c.mask, c.name), c.matches)
            << std::filesystem::path(c.mask) << " " << std::filesystem::path(c.name);
    // A mask that would send a naive recursive matcher into exponential time.
    const std::wstring name(5000, L'a');
    EXPECT_FALSE(win::mask_matches(L"*a*a*a*a*a*a*a*a*a*a*b", name));
    EXPECT_TRUE(win::mask_matches(L"*a*a*a*a*a*a*a*a*a*a*", name));
}

TEST_F(FileSearch, MasksMatchWithoutRegardToCaseAndEntriesTellFoldersSizesAndTimes) {
    EXPECT_EQ(names_found(in_tree(L"*.vhdx")), (std::set<std::wstring>{L"vm1.vhdx", L"snap.vhdx"}));
    EXPECT_EQ(names_found(in_tree(L"VM1.*")), (std::set<std::wstring>{L"vm1.vhdx", L"VM1.AVHDX"}));
    EXPECT_EQ(names_found(in_tree(L"?????.txt")), (std::set<std::wstring>{L"notes.txt"}));
    const std::set<std::wstring> without_extension{L".", L"..", L"README", L"Disks"};
    // Wine reads "*." as "*" and lists every name, where Windows lists those without an extension.
    if (names_found(in_tree(L"*.")) != names_found(in_tree(L"*")) || test_env::simulated_host) {
        EXPECT_EQ(names_found(in_tree(L"*.")), without_extension);
    }
    EXPECT_EQ(names_found(in_tree(L"*.*")),
              (std::set<std::wstring>{L".", L"..", L"vm1.vhdx", L"VM1.AVHDX", L"notes.txt", L"README",
                                      L"Disks", L"snap.vhdx"}));
    // The dots come first, as the system lists them.
    win_file_search_t search(in_tree(L"*"));
    ASSERT_TRUE(search.found());
    EXPECT_EQ(search.current().name, L".");
    EXPECT_TRUE(search.current().is_directory());
    // Closed with entries left, it gives no more.
    search.close();
    EXPECT_FALSE(search.found());
    EXPECT_FALSE(search.next());
    // Entries tell folders, sizes and times, and nothing there is an empty search.
    win_file_search_t file(in_tree(L"vm1.vhdx"));
    ASSERT_TRUE(file.found());
    EXPECT_FALSE(file.current().is_directory());
    EXPECT_EQ(file.current().size, 5u);
    EXPECT_GT(file.current().last_write_time, 116444736000000000ULL);
    EXPECT_FALSE(file.next());

    win_file_search_t folder(in_tree(L"disks"));
    ASSERT_TRUE(folder.found());
    EXPECT_EQ(folder.current().name, L"Disks");
    EXPECT_TRUE(folder.current().is_directory());
    // Nothing there is an empty search, not a failure.
    EXPECT_TRUE(names_found(in_tree(L"*.iso")).empty());
    EXPECT_TRUE(names_found(tree.wide("missing\\folder") + L"\\*").empty());
    EXPECT_TRUE(names_found(in_tree(L"notes.txt\\*")).empty());
    EXPECT_TRUE(names_found(L"Q:\\not\\mapped\\*").empty());
    EXPECT_FALSE(win_file_search_t(in_tree(L"*.iso")).found());
}
