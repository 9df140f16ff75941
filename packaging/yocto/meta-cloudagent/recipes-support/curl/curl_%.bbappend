# kdump pins DNS servers, which only c-ares can, and logs libcurl's error texts.
PACKAGECONFIG:remove:class-target = "threaded-resolver"
PACKAGECONFIG:append:class-target = " ares openssl proxy verbose"
