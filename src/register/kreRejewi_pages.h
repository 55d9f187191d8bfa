#pragma once

namespace tandeko {

class kreRejewi;

// Adds the wizard's pages in the order of kreRejewi::Page.
void addRegisterPages(kreRejewi& wizard);

}  // namespace tandeko
