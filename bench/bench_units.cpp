// Quantity texts and the unit choices' settings store, each beside a bare baseline.
//
// FormatStationing and FormatBearing are timed beside snprintf writing the same text from the
// same numbers (the stationing split and _radtodms done in the baseline too), and the stationing
// also beside std::to_chars writing it (the fastest standard way to the same text), ParseBearing
// beside wcstod of the same text followed by the same degrees-minutes-seconds arithmetic. Making
// and destroying a CQuantityUnits with a settings store are timed on a registry file in a scratch
// folder (warm page cache), beside reading that file whole with stdio. See docs/performance.md.
#include "bench_inputs.h"

#include "qv5/qv5lib.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#define QV5_BARE [[gnu::noinline]]

namespace {

using qv5::bench::inputs;
using qv5::bench::kTableSize;
using qv5::bench::next;

constexpr double kTwoPi = 6.283185307179586;
constexpr double kFootMetres = 0.3048006096012192;
constexpr int kDecimals = 3;
constexpr const char16_t* kKey = u"SOFTWARE\\Halvik\\QV5\\Bench";

/// Stations of 10 m to 5 km.
double station_of(std::size_t i) {
    return inputs().distances[i] * 10.0;
}

// ---- the bare baselines ----------------------------------------------------------------------

QV5_BARE int bare_stationing(double metres, char* buffer, std::size_t size) {
    const double h = std::fabs(metres) / kFootMetres;
    const int n = static_cast<int>(h * 0.01 + 1e-6);
    const double rest = h - (n * 100.0 - 1e-6);
    return std::snprintf(buffer, size, metres < 0.0 ? "-%i+%0*.*f'" : "%i+%0*.*f'", n,
                         kDecimals + 3, kDecimals, rest);
}

/// The same stationing text written with std::to_chars: the fastest standard way to it (no
/// format string to interpret, no locale).
QV5_BARE int bare_stationing_to_chars(double metres, char* buffer, std::size_t size) {
    const double h = std::fabs(metres) / kFootMetres;
    const int n = static_cast<int>(h * 0.01 + 1e-6);
    const double rest = h - (n * 100.0 - 1e-6);
    char* out = buffer;
    char* const end = buffer + size;
    if (metres < 0.0) {
        *out++ = '-';
    }
    out = std::to_chars(out, end, n).ptr;
    *out++ = '+';
    char digits[32];
    const char* digits_end =
        std::to_chars(digits, digits + sizeof digits, rest, std::chars_format::fixed, kDecimals)
            .ptr;
    // Zero-padded to the width "%0*.*f" gives: three integer digits, the point, the decimals.
    const std::ptrdiff_t width = kDecimals + 3;
    for (std::ptrdiff_t pad = width - (digits_end - digits); pad > 0; --pad) {
        *out++ = '0';
    }
    out = std::copy(static_cast<const char*>(digits), digits_end, out);
    *out++ = '\'';
    *out = '\0';
    return static_cast<int>(out - buffer);
}

QV5_BARE int bare_bearing(double radians, char* buffer, std::size_t size) {
    int d = 0;
    int m = 0;
    double s = 0.0;
    _radtodms(radians, &d, &m, &s);
    return std::snprintf(buffer, size, "%i\xC2\xB0%02i'%02i\"", d, m, static_cast<int>(s + 0.5));
}

QV5_BARE double bare_parse(const wchar_t* text) {
    const double v = std::wcstod(text, nullptr);
    const int d = static_cast<int>(v);
    const double a = (std::fabs(v) + 1e-10 - std::fabs(static_cast<double>(d))) * 100.0;
    const int m = static_cast<int>(a);
    double r = 0.0;
    _dmstorad(d, m, (a - m) * 100.0, &r);
    while (r >= kTwoPi) {
        r -= kTwoPi;
    }
    while (r < 0.0) {
        r += kTwoPi;
    }
    return r;
}

QV5_BARE std::size_t bare_read_store(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return 0;
    }
    char chunk[4096];
    std::size_t total = 0;
    std::size_t n = 0;
    while ((n = std::fread(chunk, 1, sizeof chunk, file)) > 0) {
        total += n;
    }
    std::fclose(file);
    return total;
}

// ---- texts -----------------------------------------------------------------------------------

CQuantityUnits& feet_units() {
    static CQuantityUnits units{CString()}; // no store: the defaults, US survey feet
    return units;
}

void BM_FormatStationing(benchmark::State& state) {
    const CQuantityUnits& units = feet_units();
    unsigned short buffer[CQuantityUnits::kFormatBufferSize];
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(units.FormatStationing(station_of(i), kDecimals, buffer));
        benchmark::ClobberMemory();
        i = next(i);
    }
}
BENCHMARK(BM_FormatStationing);

void BM_FormatStationing_Bare(benchmark::State& state) {
    char buffer[64];
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bare_stationing(station_of(i), buffer, sizeof buffer));
        benchmark::ClobberMemory();
        i = next(i);
    }
}
BENCHMARK(BM_FormatStationing_Bare);

void BM_FormatStationing_ToChars(benchmark::State& state) {
    // The two baselines must write the same text, or the faster one proves nothing.
    for (std::size_t i = 0; i < kTableSize; ++i) {
        char printed[64];
        char converted[64];
        bare_stationing(station_of(i), printed, sizeof printed);
        bare_stationing_to_chars(station_of(i), converted, sizeof converted);
        if (std::string(printed) != std::string(converted)) {
            state.SkipWithError(("std::to_chars wrote " + std::string(converted) +
                                 " where snprintf wrote " + std::string(printed))
                                    .c_str());
            return;
        }
    }
    char buffer[64];
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bare_stationing_to_chars(station_of(i), buffer, sizeof buffer));
        benchmark::ClobberMemory();
        i = next(i);
    }
}
BENCHMARK(BM_FormatStationing_ToChars);

void BM_FormatBearing(benchmark::State& state) {
    const CQuantityUnits& units = feet_units();
    unsigned short buffer[CQuantityUnits::kFormatBufferSize];
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(units.FormatBearing(inputs().angles[i], buffer));
        benchmark::ClobberMemory();
        i = next(i);
    }
}
BENCHMARK(BM_FormatBearing);

void BM_FormatBearing_Bare(benchmark::State& state) {
    char buffer[64];
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bare_bearing(inputs().angles[i], buffer, sizeof buffer));
        benchmark::ClobberMemory();
        i = next(i);
    }
}
BENCHMARK(BM_FormatBearing_Bare);

/// The texts a surveyor types: each input bearing as FormatForEdit writes it (DDD.MMSS).
struct TypedBearings {
    std::vector<std::vector<unsigned short>> utf16;
    std::vector<std::wstring> wide;
    TypedBearings() {
        for (std::size_t i = 0; i < kTableSize; ++i) {
            unsigned short buffer[CQuantityUnits::kFormatBufferSize];
            feet_units().FormatForEdit(std::fabs(inputs().angles[i]), buffer);
            std::vector<unsigned short> text;
            std::wstring w;
            for (const unsigned short* p = buffer; *p != 0; ++p) {
                text.push_back(*p);
                w.push_back(static_cast<wchar_t>(*p));
            }
            text.push_back(0);
            utf16.push_back(text);
            wide.push_back(w);
        }
    }
};

const TypedBearings& typed() {
    static const TypedBearings table;
    return table;
}

void BM_ParseBearing(benchmark::State& state) {
    const CQuantityUnits& units = feet_units();
    const TypedBearings& texts = typed();
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(units.ParseBearing(texts.utf16[i].data()));
        i = next(i);
    }
}
BENCHMARK(BM_ParseBearing);

void BM_ParseBearing_Bare(benchmark::State& state) {
    const TypedBearings& texts = typed();
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(bare_parse(texts.wide[i].c_str()));
        i = next(i);
    }
}
BENCHMARK(BM_ParseBearing_Bare);

// ---- the settings store ----------------------------------------------------------------------

/// A registry file in a scratch folder, named by QV5_REGISTRY for the whole run, holding the
/// benchmark's key with all eleven choices.
class ScratchStore {
public:
    ScratchStore() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "qv5-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            m_folder = pattern;
        }
        m_path = m_folder + "/registry.reg";
        setenv("QV5_REGISTRY", m_path.c_str(), 1);
        const CQuantityUnits create{CString(kKey)}; // creates the key and stores the choices
    }
    ~ScratchStore() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    const std::string& path() const { return m_path; }

private:
    std::string m_folder;
    std::string m_path;
};

const ScratchStore& store() {
    static const ScratchStore scratch;
    return scratch;
}

/// Runs `prepare`, then times `measured` alone on the wall clock, then runs `finish`, once per
/// iteration: a constructor or destructor is timed without its counterpart.
template <class Prepare, class Measured, class Finish>
void timed_alone(benchmark::State& state, Prepare prepare, Measured measured, Finish finish) {
    for (auto _ : state) {
        auto subject = prepare();
        const auto start = std::chrono::steady_clock::now();
        subject = measured(subject);
        const auto stop = std::chrono::steady_clock::now();
        finish(subject);
        state.SetIterationTime(std::chrono::duration<double>(stop - start).count());
    }
}

CQuantityUnits* nothing() {
    return nullptr;
}

CQuantityUnits* made() {
    return new CQuantityUnits(CString(kKey));
}

CQuantityUnits* destroyed(CQuantityUnits* units) {
    delete units;
    return nullptr;
}

CQuantityUnits* kept(CQuantityUnits* units) {
    return units;
}

void BM_CQuantityUnits_Construct(benchmark::State& state) {
    store();
    timed_alone(
        state, nothing, [](CQuantityUnits*) { return made(); }, destroyed);
}
BENCHMARK(BM_CQuantityUnits_Construct)->UseManualTime()->Unit(benchmark::kMicrosecond);

/// The baseline of construction and destruction: the settings file read whole.
void BM_CQuantityUnits_Construct_Bare(benchmark::State& state) {
    const std::string& path = store().path();
    timed_alone(
        state, nothing,
        [&path](CQuantityUnits* u) {
            benchmark::DoNotOptimize(bare_read_store(path));
            return u;
        },
        kept);
}
BENCHMARK(BM_CQuantityUnits_Construct_Bare)->UseManualTime()->Unit(benchmark::kMicrosecond);

/// Destruction writes the choices back; they are as stored, so the file is read and left.
void BM_CQuantityUnits_Destroy(benchmark::State& state) {
    store();
    timed_alone(state, made, destroyed, kept);
}
BENCHMARK(BM_CQuantityUnits_Destroy)->UseManualTime()->Unit(benchmark::kMicrosecond);

/// Destruction after a change: the file is locked, rewritten, flushed to disk and renamed.
void BM_CQuantityUnits_DestroyChanged(benchmark::State& state) {
    store();
    int bearings = 0;
    timed_alone(
        state,
        [&bearings] {
            CQuantityUnits* units = made();
            bearings = (bearings + 1) % 4;
            units->SetBearings(bearings);
            return units;
        },
        destroyed, kept);
}
BENCHMARK(BM_CQuantityUnits_DestroyChanged)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
