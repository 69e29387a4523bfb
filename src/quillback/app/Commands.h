#pragma once

#include <string>
#include <vector>

namespace voxtrel::quillback {

// What the program's commands do. Each returns the exit status.
// Thread: the main one, before any other is started.

/// `quillback run`: turns speech into text until a signal ends it or its parent is gone.
int runEngine();

/// `quillback setup --model MODEL --file FILE`: downloads and checks the model, or copies the user's
/// own. `model`: empty for that of the settings; `file`: empty to download.
int setUpModel(const std::string& model, const std::string& file);

/// `quillback models`: lists the models.
int printModels(bool isJson);

/// `quillback use MODEL`: writes the choice into the settings.
int chooseModel(const std::string& model);

/// `quillback remove MODEL`: removes the model's files.
int removeStoredModel(const std::string& model);

/// `quillback transcribe FILE.wav`: prints the words to standard output, all else to standard
/// error.
int printTranscript(const std::string& file);

/// `quillback retry`: does the same for each recording whose words were not delivered, the oldest
/// first.
int retryKeptTakes();

/// `quillback recognise NAME`: the recogniser's process, which the engine starts with its end of a
/// socket pair as standard input. The embedded recogniser is "embedded".
int serveRecogniserCommand(const std::vector<std::string>& arguments);

}  // namespace voxtrel::quillback
