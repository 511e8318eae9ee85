#!/usr/bin/env bash
# Shows that the tests catch real faults: applies each small fault listed in
# scripts/mutations.txt to the code, one at a time, builds and runs the tests
# that own that code, puts the code back, and counts how many faults a test
# caught. Exits non-zero when fewer than 95 % were caught.
#
# Usage: scripts/mutate.sh [build-dir] [filter]
#   build-dir    an existing build tree (default: build)
#   filter       only the faults whose name or file contains this text
#
# A fault in mutations.txt is a block:
#   @ <name> | <file> | <test executable>[,<test executable>...]
#   - <the exact original line, leading blanks ignored>
#   + <the line that replaces it>
# The original line must occur exactly once in the file. A fault that does
# not compile is reported apart and not counted.
set -uo pipefail
cd "$(dirname "$0")/.."

build=${1:-build}
filter=${2:-}
list=scripts/mutations.txt
[ -d "$build" ] || { echo "no build tree at $build (configure and build first)" >&2; exit 2; }

caught=0
survived=0
broken=0
survivors=()

# Puts the file back, newer than anything built from the fault, so the next
# build compiles it again.
restore() {
    if [ -n "${current:-}" ] && [ -f "$current.mutate-backup" ]; then
        mv -f "$current.mutate-backup" "$current"
        touch "$current"
    fi
    current=""
}
trap restore EXIT INT TERM

# Replaces the one line whose trimmed text is $2 in file $1 by $3, keeping
# the line's indentation. Fails when it is not there exactly once.
apply() {
    ORIGINAL="$2" MUTATED="$3" perl -e '
        my ($file) = @ARGV;
        open(my $in, "<", $file) or die "cannot read $file\n";
        my @lines = <$in>;
        close($in);
        my ($want, $put) = ($ENV{ORIGINAL}, $ENV{MUTATED});
        my @hits = grep { my $t = $lines[$_]; $t =~ s/^\s+|\s+$//g; $t eq $want } 0 .. $#lines;
        die scalar(@hits) . " matches\n" unless @hits == 1;
        my ($indent) = $lines[$hits[0]] =~ /^(\s*)/;
        $lines[$hits[0]] = $indent . $put . "\n";
        open(my $out, ">", $file) or die "cannot write $file\n";
        print $out @lines;
        close($out);
    ' "$1"
}

run_one() {
    local name=$1 file=$2 tests=$3 original=$4 mutated=$5
    current=$file
    cp "$file" "$file.mutate-backup"
    if ! message=$(apply "$file" "$original" "$mutated" 2>&1); then
        echo "  ?  $name: the original line is not there ($message)"
        restore
        broken=$((broken + 1))
        return
    fi
    local targets=${tests//,/ }
    # shellcheck disable=SC2086
    if ! cmake --build "$build" --target $targets >/dev/null 2>&1; then
        echo "  ?  $name: does not compile"
        restore
        broken=$((broken + 1))
        return
    fi
    local pattern="^(${tests//,/|})\$"
    if ctest --test-dir "$build" -R "$pattern" --timeout 300 >/dev/null 2>&1; then
        echo "  -  $name: survived"
        survivors+=("$name")
        survived=$((survived + 1))
    else
        echo "  +  $name: caught"
        caught=$((caught + 1))
    fi
    restore
}

name="" file="" tests="" original="" mutated=""
flush() {
    if [ -n "$name" ] && { [ -z "$filter" ] || [[ "$name" == *"$filter"* ]] || [[ "$file" == *"$filter"* ]]; }; then
        run_one "$name" "$file" "$tests" "$original" "$mutated"
    fi
    name="" file="" tests="" original="" mutated=""
}
trim() { local t="$1"; t="${t#"${t%%[![:space:]]*}"}"; printf '%s' "${t%"${t##*[![:space:]]}"}"; }

echo "Faults from $list, tested in $build:"
while IFS= read -r line || [ -n "$line" ]; do
    case "$line" in
    "@ "*)
        flush
        IFS='|' read -r name file tests <<<"${line#@ }"
        name=$(trim "$name") file=$(trim "$file") tests=$(trim "$tests")
        ;;
    "- "*) original=$(trim "${line#- }") ;;
    "+ "*) mutated=$(trim "${line#+ }") ;;
    esac
done < "$list"
flush

# The tree as it was: rebuild what the last fault touched.
cmake --build "$build" >/dev/null 2>&1

total=$((caught + survived))
echo
echo "caught $caught of $total faults ($((total ? caught * 100 / total : 0)) %); $broken not applicable"
for s in "${survivors[@]}"; do echo "survived: $s"; done
[ "$total" -gt 0 ] && [ $((caught * 100)) -ge $((total * 95)) ]
