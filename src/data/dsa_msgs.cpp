// data/dsa_msgs.cpp - the words of the storage area. Nothing is printed unless it is noisy.
#include "core/rc.h"
#include "data/dsa_int.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstdarg>
#include <cstdio>
#include <initializer_list>
#include <string>

using lines = std::initializer_list<const char *>;

static void para(lines text)
{
    outlev_keep keep(3);
    std::string all = "{p 4 4 2}\n";
    for (const char *s : text)
        all.append(s).append("\n");
    spoutsml(all.append("{p_end}\n").c_str());
}

static void heading(const char *text)
{
    outlev_keep keep(3);
    spout21(text);
    spout21("\n");
}

// A count or a size as text that lives as long as the message.
struct counted {
    char s[160];
    counted(uint64_t n, const char *behind = "")
    {
        char num[40];
        fmtnumtrim(num, sizeof num, double(n), "%20.0gc");
        snprintf(s, sizeof s, "%s%s", num, behind);
    }
};
struct sized {
    char s[160];
    explicit sized(uint64_t n, const char *behind = "")
    {
        char num[24];
        snprintf(s, sizeof s, "%s%s", sprint_memsize(num, n), behind);
    }
};

static int32_t words(int32_t rc)
{
    (void)!error(rc);
    return rc;
}

int32_t dsa_invalid(const dsa_area *d, const char *fmt, ...)
{
    if (!d->noisy)
        return RC_SYNTAX;
    char buf[200];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    heading(buf);
    return RC_SYNTAX;
}

int32_t dsa_fail_vars(const dsa_area *d)
{
    if (!d->noisy)
        return RC_NOVARROOM;
    words(RC_NOVARROOM);
    para({"Up to", counted(d->K_max, " variables are allowed with this version of Ovata.").s,
          "Versions are available that allow up to", "32,767 variables."});
    return RC_NOVARROOM;
}

int32_t dsa_fail_obs(const dsa_area *d)
{
    if (!d->noisy)
        return RC_NOOBSROOM;
    words(RC_NOOBSROOM);
    // One slot is the scratch row.
    uint64_t n = d->_N_max - 1;
    if (d->_N_max < 2147483647)
        para({"Up to", counted(n, " observations are allowed with this version of Ovata.").s,
              "Versions are available that allow", "up to 2,147,483,646 observations."});
    else
        para({"Up to", counted(n, " observations are allowed.").s});
    return RC_NOOBSROOM;
}

int32_t dsa_fail_width(const dsa_area *d)
{
    if (!d->noisy)
        return RC_NOWIDTH;
    words(RC_NOWIDTH);
    para({"Width refers to the number of bytes required to store",
          "a single observation; it is the sum of the widths", "of the individual variables.",
          "The maximum width allowed is", counted(d->width_max, " bytes.").s,
          "You just attempted to exceed that."});
    return RC_NOWIDTH;
}

int32_t dsa_fail_alloc(const dsa_area *d, uint64_t bytes)
{
    if (!d->noisy)
        return RC_NOMEM;
    words(RC_NOMEM);
    if (d->state != 3) {
        para({"In the process of initializing itself, Ovata's",
              "data-storage memory manager attempted to allocate", sized(bytes).s,
              "bytes of memory and the operating system said no."});
        return RC_NOMEM;
    }
    uint64_t held = (d->S + uint64_t(d->preallocate ? 1 : 0)) * d->segment_size;
    para({"Ovata's data-storage memory manager has already allocated", sized(held).s,
          "bytes and it just attempted", "to allocate another", sized(bytes, " bytes.").s,
          "The operating system said no.", "Perhaps you are running another memory-consuming task",
          "and the command will work later when the task",
          "completes.  Perhaps you are on a multiuser system",
          "that is especially busy and the command will work",
          "later when activity quiets down.  Perhaps a system",
          "administrator has put a limit on what you can allocate;",
          "see {help memory:help memory}.", "Or perhaps that's all the memory your computer can",
          "allocate to Ovata."});
    return RC_NOMEM;
}

static int32_t unaddressable(const char *first)
{
    heading("hardware cannot provide requested memory");
    para({first, "Ovata's data-storage memory manager just requested",
          "so much memory that it would exceed the ability",
          "of this 64-bit computer to even address the memory.",
          "You need to make the datset smaller."});
    return RC_NOMEM;
}

int32_t dsa_fail_overflow(const dsa_area *d)
{
    if (!d->noisy)
        return RC_NOMEM;
    words(RC_NOMEM);
    para({"...and for good reason.  You have attempted something",
          "so large that its size cannot even be expressed."});
    return RC_NOMEM;
}

int32_t dsa_fail_maxgoal(const dsa_area *d, uint64_t asked)
{
    if (!d->noisy)
        return RC_NOMEM;
    uint64_t total;
    if (__builtin_add_overflow(d->S * d->segment_size, asked, &total))
        return unaddressable("");
    uint64_t spare = d->preallocate ? d->segment_size : 0;
    char goal[40], num[24];
    snprintf(goal, sizeof goal, "{bf:set max_memory %s}.",
             sprint_memsize(num, dsa_memory_max_goal_adj(d)));
    heading("attempt to use too much memory");
    std::string data = "data.";
    if (spare)
        data = std::string("data, including ") + sized(spare).s + " of\nbuffers and overhead.";
    para({"You just attempted to use", sized(total + spare).s, "bytes of memory to store",
          data.c_str(), "You or your system administrator previously", goal,
          "Assuming your computer has sufficient memory,",
          "you could increase {bf:set max_memory};", "see help {help memory}.",
          "Right now, Ovata is just honoring your previous", "{bf:set max_memory} request."});
    return RC_NOMEM;
}

int32_t dsa_fail_segtab(const dsa_area *d)
{
    if (!d->noisy)
        return RC_NOMEM;
    uint64_t most;
    bool over = __builtin_mul_overflow(d->segtab.max, d->segment_size, &most);
    sized reduced(d->segment_size), current(d->segsize_suggested,
                                            "; see {help memory:help memory}.");
    heading("attempt to use too much memory");
    std::string more;
    if (d->segsize_suggested < d->segment_size || d->segment_size < d->segsize_suggested)
        more = std::string("In your case, however, Ovata already had to\n"
                           "use a reduced segment size of\n") +
               reduced.s +
               "\nbytes because your computer refused to\nallocate segments as large as set.";
    para({"You just attempted to use more memory than this",
          "Ovata can currently accomodate.  The maximum is", over ? "-1" : sized(most).s, "bytes.",
          "That maximum is probably more than your computer",
          "can provide.  You can, however, increase the maximum",
          "by increasing {bf:segmentsize}, which is currently", current.s,
          "Double segment size, and you double the maximum.", more.c_str()});
    return RC_NOMEM;
}

int32_t dsa_fail_within(const dsa_area *d)
{
    if (!d->noisy)
        return 9255;
    heading("system error");
    para({"You should not be seeing this message, so please",
          "inform Ovata Technical Services.", "In the meantime, relax.  This is a system failure, but",
          "not a serious one.  One part of Ovata thought there",
          "was enough memory to do something, and the part that",
          "actually does it said no, there's not.  Ovatacorp needs",
          "to fix this disagreement, so tell us about it."});
    return 9255;
}

int32_t dsa_fail_fsa(const dsa_area *d, uint32_t blocks, uint32_t No)
{
    if (!d->noisy)
        return RC_NOMEM;
    constexpr uint64_t bytes = fsa_perblock * sizeof(uint16_t);
    char pieces[32], now[24], asked[24];
    snprintf(pieces, sizeof pieces, "(in %u", blocks);
    snprintf(now, sizeof now, "%u", d->_No_);
    snprintf(asked, sizeof asked, "%u.", No);
    words(RC_NOMEM);
    para({"Ovata ran out of room to track where", "observations are stored.",
          "Right now, Ovata has", sized(d->fsa.nblock * bytes).s,
          "bytes allocated to track observations.", "Ovata requested an extra",
          sized(blocks * bytes).s, "bytes", pieces, "pieces)",
          "and the operating system said no.", "Ovata is currently tracking", now,
          "observations and was asked to track", asked, "You are up against the memory limits of",
          "this computer."});
    return RC_NOMEM;
}

int32_t dsa_fatal_fsa(const dsa_area *d, int32_t subcode)
{
    if (!d->noisy)
        return 9666;
    char num[16];
    snprintf(num, sizeof num, "%d", subcode);
    heading("YOU MUST EXIT OVATA NOW");
    para({"{err}", "Ovata has lost the ability to track observations.",
          "If you continue to use Ovata, it will crash.", "Report return code 9666 and subcode",
          num, "to Ovata Technical Services."});
    return 9666;
}

void dsa_note_mingoal(const dsa_area *, uint64_t bytes)
{
    // The area is started quietly, yet the user is to know what became of the setting.
    outlev_keep keep(1);
    std::string s = "{p 4 4 2}\n({bf:set min_memory} was ignored){break}\n"
                    "{bf:min_memory} was set to\n";
    s.append(sized(bytes).s)
        .append(" and that amount of memory was unavailable.\n"
                "In order to initialize Ovata's data areas, the setting\n"
                "was ignored and, in fact, reset to 0 for this session.\n"
                "Ovata is 100 percent whole and functional.\n"
                "See {help memory:help memory} to learn more.\n{p_end}\n");
    spoutsml(s.c_str());
}

static void parms_line(const dsa_area *d, int32_t which)
{
    outlev_keep keep(3);
    char num[24], line[200];
    switch (which) {
    case 1:
        snprintf(line, sizeof line, "{err}{bf:segmentsize} >= %s required\n",
                 sprint_memsize(num, dsa_segsize_floor));
        break;
    case 2:
        snprintf(line, sizeof line, "{err}{bf:segmentsize} <= %s required\n",
                 sprint_memsize(num, dsa_segsize_top));
        break;
    case 3:
        snprintf(line, sizeof line, "{err}{bf:min_memory} <= {bf:max_memory} required\n");
        break;
    case 4:
        snprintf(line, sizeof line, "{err}{bf:max_memory} >= %s{bf:segmentsize} required\n",
                 d->preallocate ? "2*" : "");
        break;
    default:
        snprintf(line, sizeof line, "{err}{bf:min_memory}/{bf:segmentsize} <= %d required\n",
                 int(dsa_S_top));
    }
    spoutsml(line);
}

// A limit as the user sets it: without one the maximum reads as missing.
static std::string limits_now(const dsa_area *d)
{
    uint64_t top = dsa_memory_max_goal_adj(d);
    return std::string("{bf:") + sized(d->memory_min_goal).s + "} and {bf:" +
           (top ? sized(top).s : ".") + "}.";
}

void dsa_say_parms(const dsa_area *d, int32_t which, uint64_t, uint64_t, uint64_t segsize)
{
    if (!d->noisy)
        return;
    parms_line(d, which);
    if (d->state != 3)
        return;
    if (which <= 2) {
        std::string range = std::string(sized(dsa_cur_segsize_min(d)).s) + " and " +
                            sized(dsa_cur_segsize_max(d)).s + ", inclusive.";
        para({"Ovata allocates memory for storing your data in units of",
              "{bf:segmentsize}; see help {help memory}.",
              "You just attempted to set {bf:segmentsize} to", sized(segsize, ".").s,
              "This version of Ovata requires that {bf:segmentsize}", "be between", range.c_str(),
              "The current value of {bf:segmentsize} is",
              sized(d->segment_size, " and the recommended value is").s, sized(33554432, ".").s});
        return;
    }
    if (which != 4) {
        para({"{bf:min_memory} and {bf:max_memory} are limits you",
              "can set; see help {help memory}.",
              "The defaults are {bf:0} and {bf:.} (missing value),",
              "meaning zero and as much memory as the operating system",
              "will supply. The current values are", limits_now(d).c_str()});
        return;
    }
    uint64_t least = segsize * (d->preallocate ? 2 : 1);
    para({"Ovata allocates memory for storing your data in units of",
          "{bf:segmentsize}.  {bf:max_memory} specifies the maximum",
          "amount of memory that Ovata can use for your data.",
          "Clearly, {bf:segmentsize} must be <= {bf:max_memory}.",
          d->preallocate ? "For efficiency reasons, Ovata allocates one\nextra segment, so\n"
                           "2*{bf:segmentsize} must be <= {bf:max_memory}."
                         : "",
          segsize == d->segment_size ? "Thus, {bf:max_memory} must be >="
          : d->preallocate ? "Thus, {bf:segmentsize} needs to be less than\nhalf of that, or"
                           : "Thus, {bf:segmentsize} needs to be less than",
          sized(segsize == d->segment_size ? least
                : d->preallocate           ? dsa_memory_max_goal_adj(d) / 2
                                           : dsa_memory_max_goal_adj(d),
                ".")
              .s});
}

void dsa_say_segsize_lost(const dsa_area *d, bool limping)
{
    outlev_keep keep(3);
    std::string s = "{err}";
    s += limping ? "that went badly, but Ovata is limping along{break}\n"
                 : "YOU MUST -{bf:exit}- OVATA NOW{break}\n";
    char size[48];
    snprintf(size, sizeof size, "{bf:segmentsize}=%d\n", int(d->segsize_min));
    s += "Ovata attempted to set what you suggested but that was\n"
         "not possible for the reasons given above.\n"
         "Ovata restored the previous settings but\n"
         "the operating system then refused to provide the memory\n"
         "it had previously allocated to Ovata.\n"
         "Ovata then requested its minimum settings, namely\n";
    s += size;
    s += "and {bf:min_memory}=0.\n";
    spoutsml(("{p 0 4 4}\n" + s + "{p_end}\n").c_str());
}
