// Eigenvalues of matrices from practice, as pictures.
#pragma once

#include <filesystem>

// Draws the modes of vibration of a network and the spectrum of a flow, whose matrices lie in the folder `data`. A file
// that is wrong, or a result that is, raises an exception.
void show_eigenvalues(const std::filesystem::path& data, const std::filesystem::path& pictures);
