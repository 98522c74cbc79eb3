#include <cstdlib>

#include "files.h"

Eina_List* eina_list_remove_list(Eina_List* list, Eina_List* node)
{
    if (!list || !node) return list;
    if (list == node) {
        Eina_List* next = list->next;
        free(list);
        return next;
    }
    Eina_List* before = list;
    while (before->next && before->next != node) before = before->next;
    if (before->next) {
        before->next = node->next;
        free(node);
    }
    return list;
}
