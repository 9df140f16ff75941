/* send_file FILE URL: hands FILE to the upload of the library, which removes it afterwards. */
#include <curl/curl.h>
#include <stdio.h>

#include "cloud_http/file_upload.h"

int main(int argc, char **argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: send_file FILE URL\n");
        return 2;
    }
    curl_global_init(CURL_GLOBAL_ALL);
    const int result = api_TFA_post_FILE(argv[1], argv[2], 0);
    printf("result %d\n", result);
    return result == 0 ? 0 : 1;
}
