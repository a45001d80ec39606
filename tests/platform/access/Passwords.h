#pragma once

namespace tarno::osa
{

// "secret", by methods that take a moment only.
inline constexpr char kSecretByBcrypt[] = "$2y$04$abcdefghijklmnopqrstuu2r9OfJnfCsdneAXAGHnS4UpFFP8WIrW";
inline constexpr char kSecretBySha[] = "$5$rounds=1000$saltsalt$eKLZU9t9OoPWrqOQsoTIKG0aYkZ5rGOoOQhiIvoSWX2";
inline constexpr char kSecretByYescrypt[] = "$y$j75$saltsalt$0gBD67sgmJgRX3RZ6wHHO7sHimQEWGCWN85o4Twogh2";

// The values of an Authorization field.
inline constexpr char kAnnSecret[] = "Basic YW5uOnNlY3JldA==";    // ann:secret
inline constexpr char kAnnWrong[] = "Basic YW5uOndyb25n";         // ann:wrong
inline constexpr char kNobodySecret[] = "Basic Ym9iOnNlY3JldA=="; // bob:secret

} // namespace tarno::osa
