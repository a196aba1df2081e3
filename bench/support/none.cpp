// Keeps the bench support library non-empty.
