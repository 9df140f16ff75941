/*
 * The lower bound: the same requests and shell command with libcurl alone. It searches replies as
 * plain text, logs nothing, and exits at the first failure.
 */
#include <curl/curl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static char reply[4096];
static size_t held;

static size_t keep(char *data, size_t size, size_t count, void *unused) {
    (void)unused;
    if (held + size * count < sizeof reply) {
        memcpy(reply + held, data, size * count);
        held += size * count;
        reply[held] = '\0';
    }
    return size * count;
}

static void get_proxy(void) {
    CURL *const handle = curl_easy_init();
    held = 0;
    curl_easy_setopt(handle, CURLOPT_URL, "http://127.0.0.1:8000/api/system/cloud_proxy");
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, keep);
    curl_easy_perform(handle);
    curl_easy_cleanup(handle);
}

static CURL *request(const char *url, const char *method, struct curl_slist *headers) {
    CURL *const handle = curl_easy_init();
    held = 0;
    curl_easy_setopt(handle, CURLOPT_URL, url);
    curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, method);
    curl_easy_setopt(handle, CURLOPT_SSLCERT, "CRT");
    curl_easy_setopt(handle, CURLOPT_SSLKEY, "KEY");
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, keep);
    return handle;
}

static void finish(CURL *handle, struct curl_slist *headers) {
    if (curl_easy_perform(handle) != CURLE_OK) {
        exit(1);
    }
    curl_easy_cleanup(handle);
    curl_slist_free_all(headers);
}

static void ask_for_url(char *url, size_t size) {
    get_proxy();
    struct curl_slist *const headers = curl_slist_append(NULL, "Content-Type: application/json");
    CURL *const handle = request("https://tfa.example.com/dev/tfaapi/kdumps", "POST", headers);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, "{\"filename\": \"segmentrace.txt\"}");
    finish(handle, headers);
    const char *const start = strstr(reply, "https://");
    if (start != NULL) {
        snprintf(url, size, "%.*s", (int)strcspn(start, "\""), start);
    }
}

static void upload(const char *path, const char *url) {
    get_proxy();
    FILE *const file = fopen(path, "rb");
    struct stat status;
    if (file == NULL || fstat(fileno(file), &status) != 0) {
        exit(1);
    }
    struct curl_slist *const headers =
        curl_slist_append(NULL, "Content-Type: application/octet-stream");
    CURL *const handle = request(url, "PUT", headers);
    curl_easy_setopt(handle, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle, CURLOPT_READDATA, file);
    curl_easy_setopt(handle, CURLOPT_INFILESIZE_LARGE, (curl_off_t)status.st_size);
    finish(handle, headers);
    fclose(file);
}

int main(void) {
    static char url[1024];
    curl_global_init(CURL_GLOBAL_ALL);
    if (system("cp /mnt/data/iss_config/segmentrace.txt /tmp/segmentrace.txt") != 0) {
        return 1;
    }
    ask_for_url(url, sizeof url);
    upload("/tmp/segmentrace.txt", url);
    unlink("/tmp/segmentrace.txt");
    unlink("/mnt/data/iss_config/segmentrace.txt");
    return 0;
}
