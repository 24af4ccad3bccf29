#!/bin/sh
# Makes the index that search reads: a line for each page of help, PAGE|TITLE|WORDS.
#   tools/help-index.sh            writes help/index
#   tools/help-index.sh --print    to standard output
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
make_index() {
    LC_ALL=C
    export LC_ALL
    cd "$here/help"
    for page in *.ovhlp; do
        awk -v page="${page%.ovhlp}" '
        function plain(s) {
            gsub(/\{c -\(\}/, "\001", s); gsub(/\{c \)-\}/, "\002", s)
            gsub(/\{hline[^}]*\}/, "", s)
            # A tag with a text leaves the text, a link its topic.
            while (match(s, /\{[a-zA-Z0-9_.&]+[^{}:]*:[^{}]*\}/)) {
                t = substr(s, RSTART + 1, RLENGTH - 2); sub(/^[^:]*:/, "", t)
                gap = substr(s, RSTART, 6) == "{synop" || substr(s, RSTART, 6) == "{p2col" ? " " : ""
                s = substr(s, 1, RSTART - 1) t gap substr(s, RSTART + RLENGTH)
            }
            while (match(s, /\{(help|manhelp) [^{}]*\}/)) {
                t = substr(s, RSTART + 1, RLENGTH - 2); sub(/^[a-z]* */, "", t)
                s = substr(s, 1, RSTART - 1) t substr(s, RSTART + RLENGTH)
            }
            gsub(/\{[^{}]*\}/, " ", s)
            gsub(/\001/, "{", s); gsub(/\002/, "}", s)
            return s
        }
        NR == 1 && $0 == "{omcl}" { next }
        /^\{p 8 8 2\}\{cmd:\. / { next }   # an example is not what the page is about
        /^\{bf:See also\}$/ { exit }
        !titled {
            line = plain($0); sub(/^[^ ]* +/, "", line); sub(/ +$/, "", line); gsub(/\|/, " ", line)
            if (line != "") { title = line; titled = 1 }
            next
        }
        {
            text = tolower(plain($0)); gsub(/[^a-z0-9_]+/, " ", text); n = split(text, w, " ")
            for (i = 1; i <= n; i++)
                if (length(w[i]) > 1 && length(w[i]) < 33 && !(w[i] in seen) &&
                    w[i] !~ /^[0-9]+$/ &&
                    " a an as by in is it no of on or to the and that for with from not are this its one when has have each which " \
                    "syntax description options example see also " !~ (" " w[i] " ")) {
                    seen[w[i]] = 1; words = words (words == "" ? "" : " ") w[i]
                }
        }
        END { print page "|" title "|" words }' "$page"
    done
}
case ${1:-} in
--print) make_index ;;
*) make_index >"$here/help/index.new" && mv "$here/help/index.new" "$here/help/index" ;;
esac
