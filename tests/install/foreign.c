/* A client of the installed library: prints through a string buffer and takes a lock, which only
   works with the thread layer in place. */
#include <oru/oru.h>
#include <stdio.h>

int main(void) {
    static oru_mtx_t mutex = ORU_THREAD_NAMED("foreign");
    ORUDoStrbuf *text = oru_do_strbuf_new();
    if (text == NULL) return 1;
    oru_do_strbuf_add_string(text, "installed ");
    oru_do_strbuf_add_long(text, oru_mtx_lock(&mutex));
    oru_do_strbuf_add_char(text, '\n');
    oru_do_strbuf_print_fp(text, stdout);
    oru_do_strbuf_deref(text);
    return 0;
}
