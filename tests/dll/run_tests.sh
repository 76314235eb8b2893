#!/bin/bash
# run_tests.sh PROGRAM ARGS...: runs the tests of the DLL under Wine. Makes the tree with a link in
# it beforehand, since Wine's programs cannot make one, and gives it the drive Q:.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/wine_env.sh"
wine_prepare

linked=$quastel_root/build/linked_tree
rm -rf "$linked"
mkdir -p "$linked/tree/real" "$linked/outside"
echo inside >"$linked/tree/real/inside.txt"
echo outside >"$linked/outside/outside.txt"
ln -s ../outside "$linked/tree/link"
wine_link_drive Q "$linked"

export QUASTEL_TEST_LINKED_TREE='Q:\tree'
exec "$here/../../scripts/wine_run.sh" "$@"
