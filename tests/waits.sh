# What the shell commands of the tests wait with. They look at processes of their own only, so they
# work in every container: /proc/locks shows no lock of another process namespace.
# shellcheck shell=sh

# await CONDITION: evaluates it until it holds. After 30 seconds it says for what it has waited and
# ends the shell with 99.
await() {
    await_end=$(($(date +%s) + 30))
    until eval "$1"; do
        if [ "$(date +%s)" -gt $await_end ]; then
            echo "Waited in vain until $1" >&2
            exit 99
        fi
        sleep 0.01
    done
}

# waiting FILE: prints how many runs have the file open and sleep: they wait for its lock or its
# content, or for what comes later.
waiting() {
    find -L /proc/[0-9]*/fd -maxdepth 1 -samefile "$1" -printf '%H/../stat\n' 2>/dev/null |
        sort -u | xargs -r grep -slE '\((tqs|tqsmgr)\) S' | wc -l
}
