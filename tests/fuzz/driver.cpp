// tests/fuzz/driver.cpp - runs a fuzz target without libFuzzer: every file of its corpus, then
// a bounded number of mutations of them (FUZZ_RUNS, 2000 by default) from a fixed seed.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *p, size_t n);

static uint64_t seed = 88172645463325252u;
static uint32_t draw(uint32_t n)
{
    seed ^= seed << 13;
    seed ^= seed >> 7;
    seed ^= seed << 17;
    return n ? uint32_t(seed % n) : 0;
}

static void mutate(std::vector<uint8_t> &v, const std::vector<uint8_t> &other)
{
    static const uint8_t telling[] = {0, 1, 0x7f, 0x80, 0xff, '"', '(', ')', '{', '}', '`', '\''};
    for (uint32_t i = 1 + draw(6); i; i--) {
        uint32_t at = draw(uint32_t(v.size()));
        switch (draw(7)) {
        case 0: if (!v.empty()) v[at] = uint8_t(draw(256)); break;
        case 1: if (!v.empty()) v[at] = telling[draw(sizeof telling)]; break;
        case 2: if (!v.empty()) v.erase(v.begin() + at); break;
        case 3: v.insert(v.begin() + at, telling[draw(sizeof telling)]); break;
        case 4: v.resize(at); break;
        case 5:   // a stretch again and again
            if (!v.empty() && v.size() < 20000) {
                uint32_t most = uint32_t(v.size()) - at;
                std::vector<uint8_t> piece(v.begin() + at, v.begin() + at + 1 + draw(most < 12 ? most : 12));
                for (uint32_t k = draw(draw(8) ? 20 : 1500); k; k--)
                    v.insert(v.begin() + at, piece.begin(), piece.end());
            }
            break;
        default:
            if (!other.empty()) {
                uint32_t from = draw(uint32_t(other.size()));
                uint32_t len = draw(uint32_t(other.size()) - from);
                v.insert(v.begin() + at, other.begin() + from, other.begin() + from + len);
            }
        }
    }
}

int main(int argc, char **argv)
{
    std::vector<std::vector<uint8_t>> corpus;
    if (argc > 1 && std::filesystem::is_directory(argv[1]))
        for (auto &e : std::filesystem::directory_iterator(argv[1])) {
            std::ifstream f(e.path(), std::ios::binary);
            corpus.emplace_back(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
        }
    if (corpus.empty()) {
        fprintf(stderr, "no corpus\n");
        return 1;
    }
    for (auto &v : corpus)
        LLVMFuzzerTestOneInput(v.data(), v.size());
    const char *runs = getenv("FUZZ_RUNS");
    long n = runs ? atol(runs) : 2000;
    for (long i = 0; i < n; i++) {
        std::vector<uint8_t> v = corpus[draw(uint32_t(corpus.size()))];
        mutate(v, corpus[draw(uint32_t(corpus.size()))]);
        LLVMFuzzerTestOneInput(v.data(), v.size());
    }
    printf("%zu seeds, %ld mutations\n", corpus.size(), n);
    return 0;
}
