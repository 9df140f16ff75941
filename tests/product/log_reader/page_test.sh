#!/usr/bin/env bash
# Usage: page_test.sh [PICTURE]
#
# The log reader's page in headless Chromium. Saves the README's picture of it as PICTURE.
. "$(dirname "$0")/../../../script/lib/common.sh"

install_packages chromium chromium-driver # nothing else needs a browser
PICTURE=${1-} exec node --test "$(dirname "$0")/page_test.js"
