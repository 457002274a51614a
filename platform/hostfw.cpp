// The host-framework string type.
#include "qv5/hostfw.h"

#include "platform/text_codec.h"

#include <algorithm>

namespace {

std::vector<unsigned short> terminated(std::u16string_view text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

template <class Unit>
std::vector<unsigned short> copy_terminated(const Unit* text) {
    std::vector<unsigned short> units;
    if (text != nullptr) {
        for (; *text != 0; ++text) {
            units.push_back(static_cast<unsigned short>(*text));
        }
    }
    units.push_back(0);
    return units;
}

} // namespace

CString::CString() : m_units(1, 0) {}

CString::CString(const unsigned short* text) : m_units(copy_terminated(text)) {}

CString::CString(const char16_t* text) : m_units(copy_terminated(text)) {}

CString::CString(const char* utf8)
    : m_units(terminated(qv5::detail::utf8_to_utf16(utf8 != nullptr ? utf8 : ""))) {}

CString CString::FromUtf8(std::string_view utf8) {
    CString result;
    result.m_units = terminated(qv5::detail::utf8_to_utf16(utf8.substr(0, utf8.find('\0'))));
    return result;
}

CString CString::FromUtf16(const unsigned short* text, std::size_t length) {
    CString result;
    if (text == nullptr) {
        return result;
    }
    const unsigned short* end = std::find(text, text + length, static_cast<unsigned short>(0));
    result.m_units.assign(text, end);
    result.m_units.push_back(0);
    return result;
}

CString::CString(const CString& other) = default;

CString::CString(CString&& other) noexcept : m_units(std::move(other.m_units)) {
    other.m_units.assign(1, 0);
}

CString& CString::operator=(const CString& other) = default;

CString& CString::operator=(CString&& other) noexcept {
    if (this != &other) {
        m_units = std::move(other.m_units);
        other.m_units.assign(1, 0);
    }
    return *this;
}

CString::~CString() = default;

int CString::GetLength() const {
    return static_cast<int>(m_units.size() - 1);
}

int CString::IsEmpty() const {
    return m_units.size() == 1 ? 1 : 0;
}

void CString::Empty() {
    m_units.assign(1, 0);
}

int CString::Compare(const CString& other) const {
    for (std::size_t i = 0;; ++i) {
        const unsigned short a = m_units[i];
        const unsigned short b = other.m_units[i];
        if (a != b) {
            return a < b ? -1 : 1;
        }
        if (a == 0) {
            return 0;
        }
    }
}

int CString::CompareNoCase(const CString& other) const {
    for (std::size_t i = 0;; ++i) {
        const unsigned short a = qv5::detail::fold_case(m_units[i]);
        const unsigned short b = qv5::detail::fold_case(other.m_units[i]);
        if (a != b) {
            return a < b ? -1 : 1;
        }
        if (a == 0) {
            return 0;
        }
    }
}

bool CString::operator==(const CString& other) const {
    return m_units == other.m_units;
}

bool CString::operator!=(const CString& other) const {
    return !(*this == other);
}

CString& CString::operator+=(const CString& other) {
    const std::vector<unsigned short> tail(other.m_units); // other may be this string
    m_units.pop_back();
    m_units.insert(m_units.end(), tail.begin(), tail.end());
    return *this;
}

const unsigned short* CString::GetString() const {
    return m_units.data();
}

std::string CString::ToUtf8() const {
    const std::u16string text(m_units.begin(), m_units.end() - 1);
    return qv5::detail::utf16_to_utf8(text);
}
