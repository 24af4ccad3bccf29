// tests/pty/screen.h - a small terminal: what a program wrote, as a person would see it.
//
// Knows the controls that line editors and this program send; the others are skipped whole.
#pragma once
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

class Screen
{
  public:
    explicit Screen(int r = 24, int c = 80) { resize(r, c); }
    void resize(int r, int c)
    {
        rows = r;
        cols = c;
        line.resize(size_t(rows));
        for (auto &l : line)
            l.resize(size_t(cols), " ");
        y = std::min(y, rows - 1);
        x = std::min(x, cols - 1);
    }
    void feed(const std::string &bytes)
    {
        for (char c : bytes)
            byte(c);
    }
    std::string row(int i) const
    {
        std::string out;
        for (const auto &cell : line[size_t(i)])
            out += cell;
        out.erase(out.find_last_not_of(' ') + 1);
        return out;
    }
    std::string cursor_row() const { return row(y); }
    int cursor_column() const { return x; }
    std::string all() const
    {
        std::string out;
        for (int i = 0; i < rows; i++)
            out += row(i) + "\n";
        out.erase(out.find_last_not_of('\n') + 1);
        return out;
    }

  private:
    int rows = 0, cols = 0, x = 0, y = 0;
    bool wrap = false;
    std::vector<std::vector<std::string>> line;
    std::string esc;

    void down()
    {
        if (++y < rows)
            return;
        y = rows - 1;
        line.erase(line.begin());
        line.emplace_back(size_t(cols), " ");
    }
    void glyph(char c)
    {
        if ((static_cast<unsigned char>(c) & 0xc0) == 0x80) { // the rest of a character
            int at = wrap ? x : x - 1;
            if (at >= 0)
                line[size_t(y)][size_t(at)] += c;
            return;
        }
        if (wrap) {
            x = 0;
            down();
            wrap = false;
        }
        line[size_t(y)][size_t(x)] = std::string(1, c);
        if (x + 1 < cols)
            x++;
        else
            wrap = true;
    }
    void byte(char c)
    {
        if (!esc.empty()) {
            esc += c;
            escape();
            return;
        }
        if (c != 27 && c != '\r' && c != '\n' && c != '\b' && c != 7 && c != '\t') {
            if (static_cast<unsigned char>(c) >= 32)
                glyph(c);
            return;
        }
        if (c != 27)
            wrap = false;
        switch (c) {
        case 27: esc = c; break;
        case '\r': x = 0; break;
        case '\n': down(); break;
        case '\b': x = std::max(0, x - 1); break;
        case '\t': x = std::min(cols - 1, (x | 7) + 1); break;
        }
    }
    void escape()
    {
        if (esc.size() == 2 && esc[1] == 'M') {
            if (y > 0)
                y--;
            esc.clear();
        } else if (esc.size() == 2 && (esc[1] == '(' || esc[1] == ')')) {
            return;
        } else if (esc[1] != '[') {
            esc.clear();
        } else if (esc.size() > 2 && esc.back() >= '@' && esc.back() <= '~') {
            std::string all = esc.substr(2, esc.size() - 3);
            char last = esc.back();
            esc.clear();
            if (all.empty() || all[0] != '?')
                control(last, all);
        }
    }
    void control(char how, const std::string &args)
    {
        int n = atoi(args.c_str()), one = n ? n : 1;
        size_t semi = args.find(';');
        auto &l = line[size_t(y)];
        wrap = false;
        switch (how) {
        case 'A': y = std::max(0, y - one); break;
        case 'B': y = std::min(rows - 1, y + one); break;
        case 'C': x = std::min(cols - 1, x + one); break;
        case 'D': x = std::max(0, x - one); break;
        case 'G': x = std::min(cols, one) - 1; break;
        case 'd': y = std::min(rows, one) - 1; break;
        case 'H':
            y = std::min(rows, one) - 1;
            x = semi == args.npos ? 0
                                  : std::min(cols, std::max(1, atoi(args.c_str() + semi + 1))) - 1;
            break;
        case 'J':
            for (int i = n == 2 ? 0 : y; i < rows; i++)
                for (int k = i == y && n != 2 ? x : 0; k < cols; k++)
                    line[size_t(i)][size_t(k)] = " ";
            break;
        case 'K':
            for (int k = n ? 0 : x; k < (n == 1 ? x + 1 : cols); k++)
                l[size_t(k)] = " ";
            break;
        case 'P':
            for (int i = 0; i < one && x < cols; i++) {
                l.erase(l.begin() + x);
                l.emplace_back(" ");
            }
            break;
        case '@':
            for (int i = 0; i < one && x < cols; i++) {
                l.insert(l.begin() + x, " ");
                l.pop_back();
            }
            break;
        default: break;
        }
    }
};
