#!/bin/bash
# run_tests.sh PAGES ARGS...: tests the client's pages in Chromium. PAGES is the folder of pages that
# the client made; ARGS go to the tests, such as the name of one.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# The one that the packages of the system belong to need not be the first.
for python in python3 /usr/bin/python3; do
  if "$python" -c 'import selenium' 2>/dev/null; then
    exec "$python" -B "$here/page_test.py" "$@"
  fi
done
echo "no python3 finds selenium: install python3-selenium" >&2
exit 1
