#!/bin/bash
# Usage: use_program.sh     in a root with the packages installed
#
# The demo, which compares console, requests, uploads and files with what they have to be, and the
# example agent.
set -euo pipefail

echo '== every library is found'
ldd /usr/sbin/kdump /usr/bin/virtual_device /usr/lib/*/cloudagent-virtual-device/agent >/tmp/ldd
grep -q '/cloudagent/libcurl.so.4 ' /tmp/ldd
if grep 'not found' /tmp/ldd; then exit 1; fi
rm /tmp/ldd

echo '== the demo'
virtual_device run --scenario segmentrace

echo '== the agent that comes with the device'
virtual_device run -- agent
