# Compares counts: awk -f compare_counts.awk GOALS COMMITTED COUNTED. Prints the table, what is
# wrong below it, and ends with 1 if anything is.
BEGIN {
    TOLERANCE = 0.03
    GROWTH = 1.3 # of an exchange, from 100 to 100,000 variables
    SORTING = 1000 * log(100000) / log(100) # n log n, over the same range
    FORMAT = "%-18s %6s %10s %8s %9s %8s\n"
    printf FORMAT, "operation", "n", "instr.", "change", "alloc.", "change"
}

FNR == 1 { ++file }
/^#/ {
    if (FNR == 1 && file > 1)
        tools[file] = $0
    next
}
file == 1 { goalInstructions[$1, $2] = $3; goalAllocations[$1, $2] = $4; next }
file == 2 { committed[$1, $2] = 1; instructions[$1, $2] = $3; allocations[$1, $2] = $4; next }

{
    counted[$1, $2] = 1
    printf FORMAT, $1, $2, $3, change(instructions[$1, $2], $3), $4, change(allocations[$1, $2], $4)
    if (!(($1, $2) in committed)) {
        complain($1 " at " $2 " is not in the committed table")
    } else {
        compare($1 " at " $2 ", instructions", instructions[$1, $2], $3)
        compare($1 " at " $2 ", allocations", allocations[$1, $2], $4)
    }
    if (goalInstructions[$1, $2] + 0 > 0 && $3 > goalInstructions[$1, $2])
        complain($1 " at " $2 ": more than " goalInstructions[$1, $2] " instructions")
    if (goalAllocations[$1, $2] + 0 > 0 && $4 > goalAllocations[$1, $2])
        complain($1 " at " $2 ": more than " goalAllocations[$1, $2] " allocations")
    if ($2 == 100)
        small[$1] = $3
    if ($2 == 100000 && $1 ~ /^exchange[XDC]$/)
        limitGrowth(GROWTH)
    if ($2 == 100000 && $1 ~ /^rebuild/)
        limitGrowth(SORTING)
}

END {
    for (key in committed) {
        split(key, part, SUBSEP)
        if (!(key in counted))
            complain(part[1] " at " part[2] " is committed but was not counted")
    }
    for (key in goalInstructions) {
        split(key, part, SUBSEP)
        if (!(key in counted))
            complain(part[1] " at " part[2] " has a goal but was not counted")
    }
    if (tools[2] != tools[3])
        notes = notes "note: committed with " substr(tools[2], 3) "\n      counted with   " substr(tools[3], 3) "\n"
    printf "%s%s", notes, complaints
    exit complaints != ""
}

function change(before, now)
{
    return before > 0 ? sprintf("%+.1f %%", 100 * (now / before - 1)) : now == before ? "" : "new"
}

function compare(what, before, now)
{
    if (now > before * (1 + TOLERANCE) || now < before * (1 - TOLERANCE))
        complain(what ": " now " instead of " before)
}

function limitGrowth(limit)
{
    if ($3 > limit * small[$1])
        complain($1 ": " $3 " at " $2 " is more than " limit " times " small[$1] ", that at 100")
}

function complain(text)
{
    complaints = complaints "FAILED: " text "\n"
}
