/* The same as qt_program.cpp, with another toolkit. */
#include <gtk/gtk.h>
#include <stdio.h>
#include <string.h>

static void say(const char* text, const char* more) {
    printf("%s%s\n", text, more);
    fflush(stdout);
}

static int run(GtkWidget* dialog) {
    gtk_widget_show_all(dialog);
    return gtk_dialog_run(GTK_DIALOG(dialog));
}

static GtkWidget* make_dialog(const char* title, const char* accept) {
    GtkWidget* const dialog = gtk_dialog_new_with_buttons(title, NULL, 0, "_Cancel", GTK_RESPONSE_CANCEL,
                                                          accept, GTK_RESPONSE_OK, NULL);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);
    return dialog;
}

static void show_print_dialog(const char* title) {
    char* const caption = g_strconcat("_", title, NULL);
    GtkWidget* const dialog = make_dialog(title, caption);
    gtk_container_add(GTK_CONTAINER(gtk_dialog_get_content_area(GTK_DIALOG(dialog))),
                      gtk_label_new("Ready to print."));
    say(run(dialog) == GTK_RESPONSE_OK ? "printed" : "cancelled", "");
}

static void show_save_dialog(const char* title) {
    GtkWidget* const dialog =
        gtk_file_chooser_dialog_new(title, NULL, GTK_FILE_CHOOSER_ACTION_SAVE, "_Cancel", GTK_RESPONSE_CANCEL,
                                    "_Save", GTK_RESPONSE_OK, NULL);
    gtk_file_chooser_set_current_name(GTK_FILE_CHOOSER(dialog), "default.txt");
    if (run(dialog) == GTK_RESPONSE_OK)
        say("saved ", gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(dialog)));
    else
        say("cancelled", "");
}

static void show_password_box(const char* title) {
    GtkWidget* const dialog = make_dialog(title, "_OK");
    GtkWidget* const entry = gtk_entry_new();
    gtk_entry_set_visibility(GTK_ENTRY(entry), FALSE);
    gtk_container_add(GTK_CONTAINER(gtk_dialog_get_content_area(GTK_DIALOG(dialog))), entry);
    if (run(dialog) == GTK_RESPONSE_OK)
        say("given ", gtk_entry_get_text(GTK_ENTRY(entry)));
    else
        say("cancelled", "");
}

/* A message box of this toolkit tells its kind in place of its title. */
static void show_message(const char* title) {
    GtkWidget* const dialog = gtk_dialog_new_with_buttons(title, NULL, 0, "_OK", GTK_RESPONSE_OK, NULL);
    gtk_container_add(GTK_CONTAINER(gtk_dialog_get_content_area(GTK_DIALOG(dialog))),
                      gtk_label_new("The font is bad."));
    run(dialog);
    say("ok", "");
}

static void show_main_window(const char* title) {
    GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_title(GTK_WINDOW(window), title);
    g_signal_connect(window, "destroy", G_CALLBACK(gtk_main_quit), NULL);
    gtk_widget_show_all(window);
    gtk_main();
    say("closed", "");
}

int main(int count, char** words) {
    gtk_init(&count, &words);
    if (count < 3) return 2;
    if (strcmp(words[1], "print") == 0) show_print_dialog(words[2]);
    if (strcmp(words[1], "save") == 0) show_save_dialog(words[2]);
    if (strcmp(words[1], "password") == 0) show_password_box(words[2]);
    if (strcmp(words[1], "message") == 0) show_message(words[2]);
    if (strcmp(words[1], "main") == 0) show_main_window(words[2]);
    return 0;
}
