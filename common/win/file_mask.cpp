// The search's masks as the Windows search reads them: before matching, the mask's "?" becomes
// a DOS question mark, a "*" in front of a dot a DOS star, and a dot in front of a wild card or at
// the end of the mask a DOS dot. Those three read the name as DOS did, as a base name and an
// extension:
// - DOS star: any run of characters that stops short of the name's last dot;
// - DOS question mark: one character, or none where the name has a dot or has ended;
// - DOS dot: the name's dot, or nothing once the name has ended.
// So "*." takes the names without an extension, "a?" takes "a", and "*.*" takes every name.
#include "common/win/file_search.h"

#include "compat/ascii_case.h"

#include <algorithm>
#include <vector>

namespace win {

namespace {

enum class token_kind_t { literal, star, dos_star, dos_question_mark, dos_dot };

struct token_t {
    token_kind_t kind;
    wchar_t folded; // for a literal
};

std::vector<token_t> tokens_of(const std::wstring& mask) {
    std::vector<token_t> tokens;
    tokens.reserve(mask.size());
    for (std::size_t i = 0; i < mask.size(); ++i) {
        const wchar_t next = i + 1 < mask.size() ? mask[i + 1] : L'\0';
        if (mask[i] == L'?')
            tokens.push_back({token_kind_t::dos_question_mark, 0});
        else if (mask[i] == L'*')
            tokens.push_back({next == L'.' ? token_kind_t::dos_star : token_kind_t::star, 0});
        else if (mask[i] == L'.' && (next == L'?' || next == L'*' || next == L'\0'))
            tokens.push_back({token_kind_t::dos_dot, 0});
        else
            tokens.push_back({token_kind_t::literal, compat::fold(mask[i])});
    }
    return tokens;
}

// The mask as a set of live positions, advanced over the name one character at a time: linear
// in the name for any number of stars.
class matcher_t {
public:
    matcher_t(const std::vector<token_t>& tokens, const std::wstring& name)
        : tokens_(tokens), name_(name), live_(tokens.size() + 1), next_(tokens.size() + 1) {}

    bool run() {
        const std::size_t last_dot = name_.rfind(L'.');
        live_[0] = true;
        for (std::size_t at = 0; at < name_.size(); ++at) {
            close_over_empty(at);
            std::fill(next_.begin(), next_.end(), false);
            bool any = false;
            for (std::size_t s = 0; s < tokens_.size(); ++s)
                if (live_[s])
                    any |= step(s, name_[at], at == last_dot);
            if (!any)
                return false;
            live_.swap(next_);
        }
        close_over_empty(name_.size());
        return live_[tokens_.size()];
    }

private:
    // Tokens that can match no character at this point of the name pass their position on.
    void close_over_empty(std::size_t at) {
        const bool ended = at == name_.size();
        const bool at_dot = !ended && name_[at] == L'.';
        for (std::size_t s = 0; s < tokens_.size(); ++s) {
            if (!live_[s])
                continue;
            const token_kind_t kind = tokens_[s].kind;
            if (kind == token_kind_t::star || kind == token_kind_t::dos_star ||
                (kind == token_kind_t::dos_question_mark && (ended || at_dot)) ||
                (kind == token_kind_t::dos_dot && ended))
                live_[s + 1] = true;
        }
    }

    bool step(std::size_t s, wchar_t c, bool is_last_dot) {
        switch (tokens_[s].kind) {
        case token_kind_t::literal:
            return take(s + 1, compat::fold(c) == tokens_[s].folded);
        case token_kind_t::star:
            return take(s, true);
        case token_kind_t::dos_star:
            return take(s, !is_last_dot);
        case token_kind_t::dos_question_mark:
            return take(s + 1, c != L'.');
        case token_kind_t::dos_dot:
            return take(s + 1, c == L'.');
        }
        return false;
    }

    bool take(std::size_t s, bool matched) {
        if (matched)
            next_[s] = true;
        return matched;
    }

    const std::vector<token_t>& tokens_;
    const std::wstring& name_;
    std::vector<bool> live_;
    std::vector<bool> next_;
};

} // namespace

bool mask_matches(const std::wstring& mask, const std::wstring& name) {
    const std::vector<token_t> tokens = tokens_of(mask);
    return matcher_t(tokens, name).run();
}

} // namespace win
